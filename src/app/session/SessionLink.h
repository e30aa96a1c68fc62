#pragma once

#include "NsmClient.h"
#include "SessionRecall.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <memory>

class QWidget;

namespace orvan {

class MidiSystem;
class OrvanRCUApp;
class Scheduler;

/// The app under a session manager: answers open and save with the session file beside the path
/// the manager gives, recalls the session's state to the units, reports unsaved changes, asks
/// before sending anything to a unit that arrives later, and opens MIDI only once a session is
/// open (the protocol's rule). Main thread only.
class SessionLink final : public QObject {
public:
    /// Announces the app to the manager at `url`; nothing when no link to it can be made (the app
    /// then runs as it does without a session).
    static std::unique_ptr<SessionLink> connectTo(const QString& url, OrvanRCUApp& app, QWidget& window,
                                                  Scheduler& scheduler);

    /// Starts `system` once a session is open and `surface` has painted its first frame.
    void startMidiWhenOpen(MidiSystem& system, QWidget& surface);

    SessionRecall& recall() { return m_recall; }
    /// The question shown while a unit that arrived waits for an answer.
    QMessageBox* arrivalQuestion() const { return m_question; }

private:
    SessionLink(std::unique_ptr<OscLink> link, OrvanRCUApp& app, QWidget& window, Scheduler& scheduler);
    std::optional<NsmClient::ErrorCode> open(const QString& path);
    bool save();
    void startMidiIfReady();
    void syncArrivalQuestion();

    NsmClient m_client;
    SessionRecall m_recall;
    QWidget& m_window;
    QString m_filePath;
    MidiSystem* m_midi = nullptr;
    bool m_painted = false;
    bool m_midiStarted = false;
    QPointer<QMessageBox> m_question;
};

} // namespace orvan
