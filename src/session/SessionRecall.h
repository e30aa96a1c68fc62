#pragma once

#include "Publish.h"
#include "SessionFile.h"

#include <QList>
#include <QObject>
#include <chrono>
#include <optional>

namespace orvan {

class RCUModel;
class Scheduler;

/// Brings the units to a session's state, and keeps track of whether the session has unsaved
/// changes. Never sends anything itself: a recall goes through the unit's model, with its paced
/// sending and its +48V confirmation, and only to a present, verified unit (never the Melko).
///
/// Units found while the MIDI system makes its first scan after an open are recalled at once;
/// a unit that arrives later is asked about first (`pendingArrival`), since the user may have
/// plugged it in for something else. Main thread only.
class SessionRecall final : public QObject {
    Q_OBJECT

public:
    /// How long after the MIDI system starts a unit that appears still counts as present at open.
    static constexpr std::chrono::milliseconds kOpeningScan{3000};

    SessionRecall(QList<RCUModel*> models, Scheduler& scheduler);

    /// A session was opened with `state`: present units are recalled, the others wait for
    /// `scanStarted` or their arrival. Nothing is unsaved afterwards.
    void open(SessionState state);
    /// The MIDI system starts looking for units now.
    void scanStarted();

    /// The state to save: each present unit's channels as shown; an absent unit keeps what the
    /// session held for it.
    SessionState capture() const;
    /// `state` is now on disk: nothing is unsaved.
    void saved(SessionState state);

    bool isDirty() const { return m_dirty; }

    /// The unit waiting for the user to say whether its session settings may be sent.
    RCUModel* pendingArrival() const { return m_arrivals.isEmpty() ? nullptr : m_arrivals.front(); }
    /// The question's answer: sends (through the model's recall) or not; the next unit, if any, asks.
    void answerArrival(bool send);

signals:
    void dirtyChanged(bool dirty);
    void pendingArrivalChanged();

private:
    void onPresence(RCUModel* model, bool present);
    /// Recalls the session's state to `model` if it has one that differs from what is shown.
    void recall(RCUModel* model);
    bool needsRecall(const RCUModel* model) const;
    void setDirty(bool dirty) { publish(this, &SessionRecall::dirtyChanged, m_dirty, dirty); }

    QList<RCUModel*> m_models;
    Scheduler& m_scheduler;
    std::optional<SessionState> m_state;
    bool m_scanning = false;
    QList<RCUModel*> m_arrivals;
    bool m_dirty = false;
};

} // namespace orvan
