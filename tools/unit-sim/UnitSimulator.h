#pragma once

#include "midi/MainThreadSignal.h"
#include "midi/MidiBytes.h"

#include <QString>
#include <jack/jack.h>
#include <jack/ringbuffer.h>
#include <QTextStream>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>


namespace orvan {

/// One unit on JACK: a client with a MIDI output "out" (the unit's source) and input "in" (its
/// destination), both carrying the unit's display name as their pretty name. Every Control
/// Change received is reported straight back, in the same cycle, as the hardware does; every
/// message received is logged with its JACK frame time; scripted reports play once the app has
/// attached to "out", one every `detentFrames`.
class UnitSimulator {
public:
    UnitSimulator(QString displayName, std::vector<MidiBytes::Message> script, quint32 detentMilliseconds);
    ~UnitSimulator();

    /// Opens the client on the running server (never starts one). False when there is none.
    bool start();

    /// Called on the main thread when the server goes away.
    std::function<void()> onServerGone;

    /// One logged message, written by the real-time thread.
    struct LogEntry {
        quint32 frame;
        quint32 size;
        MidiBytes::Message bytes;
    };

    // Used by the JACK callbacks.
    int process(quint32 frames);
    void serverGone();

private:
    void printLog();

    QString m_displayName;
    std::vector<MidiBytes::Message> m_script;
    quint32 m_detentMilliseconds;
    quint32 m_detentFrames = 0;

    jack_client_t* m_client = nullptr;
    std::atomic<jack_port_t*> m_in{nullptr};
    std::atomic<jack_port_t*> m_out{nullptr};
    jack_ringbuffer_t* m_log = nullptr;
    std::size_t m_scriptIndex = 0;
    quint32 m_nextReportFrame = 0;
    std::atomic<bool> m_gone{false};
    MainThreadSignal m_wake;
    QTextStream m_stdout;
};

} // namespace orvan
