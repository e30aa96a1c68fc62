#pragma once

#include "Clock.h"
#include "Scheduler.h"

namespace orvan {

/// The application's real time: the steady clock, and precise Qt timers on the main thread.
class SystemClock final : public Clock, public Scheduler {
public:
    static SystemClock& shared();

    std::chrono::nanoseconds now() const override;
    void schedule(std::chrono::milliseconds delay, QObject* context, std::function<void()> task) override;
};

} // namespace orvan
