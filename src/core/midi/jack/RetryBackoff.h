#pragma once

#include <QObject>
#include <chrono>
#include <functional>

namespace orvan {

class Scheduler;

/// Tries something again after JACK refused it for a moment, with growing pauses (50 ms, then
/// twice as long each time: six tries in about three seconds) on the main loop's scheduler,
/// instead of waiting for some other event: on a quiet server none may come. After the last try
/// it stays quiet until succeeded() (events still try on their own), so an app with nothing to
/// retry runs nothing.
///
/// Main thread only. `attempt` runs on the main thread; whoever learns how it went reports back
/// with failed() or succeeded().
class RetryBackoff {
public:
    static constexpr std::chrono::milliseconds kFirstPause{50};
    static constexpr int kTries = 6;

    RetryBackoff(Scheduler& scheduler, std::function<void()> attempt);

    /// Something failed: the next try is scheduled, unless one is already due or all were used.
    void failed();
    /// It worked, or there is nothing left to do (the unit went): the next failure starts over.
    void succeeded() { m_tries = 0; }

private:
    Scheduler& m_scheduler;
    std::function<void()> m_attempt;
    QObject m_context; // a due try dies with this object
    int m_tries = 0;
    bool m_due = false;
};

} // namespace orvan
