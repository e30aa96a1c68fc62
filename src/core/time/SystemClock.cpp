#include "SystemClock.h"

#include <QTimer>

namespace orvan {

SystemClock& SystemClock::shared()
{
    static SystemClock clock;
    return clock;
}

std::chrono::nanoseconds SystemClock::now() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

void SystemClock::schedule(std::chrono::milliseconds delay, QObject* context, std::function<void()> task)
{
    // A coarse timer may fire up to 5 % late; the units' 12 ms pacing wants the precise one.
    QTimer::singleShot(delay, Qt::PreciseTimer, context, std::move(task));
}

} // namespace orvan
