#pragma once

#include "Clock.h"
#include "Scheduler.h"

#include <QPointer>
#include <cstdint>
#include <vector>

namespace orvan {

/// Time that moves only when told to: tests and benchmarks drive paced sends and the echo window
/// with it, exactly and without sleeping.
class ManualClock final : public Clock, public Scheduler {
public:
    std::chrono::nanoseconds now() const override { return m_now; }
    void schedule(std::chrono::milliseconds delay, QObject* context, std::function<void()> task) override;

    /// Moves time forward by `by`, running every task that falls due, in due order, with the
    /// clock standing at each task's due time while it runs.
    void advance(std::chrono::nanoseconds by);

    /// Runs tasks until none is left (tasks may schedule further tasks).
    void runUntilIdle();

    std::size_t pendingTasks() const { return m_tasks.size(); }

private:
    struct Task {
        std::chrono::nanoseconds due;
        std::uint64_t sequence;
        QPointer<QObject> context;
        bool hasContext;
        std::function<void()> run;
    };
    bool runNextDueBy(std::chrono::nanoseconds limit);

    std::chrono::nanoseconds m_now{0};
    std::uint64_t m_nextSequence = 0;
    std::vector<Task> m_tasks;
};

} // namespace orvan
