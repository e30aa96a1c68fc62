#include "ManualClock.h"

#include <algorithm>

namespace orvan {

void ManualClock::schedule(std::chrono::milliseconds delay, QObject* context, std::function<void()> task)
{
    m_tasks.push_back({m_now + delay, m_nextSequence++, context, context != nullptr, std::move(task)});
}

bool ManualClock::runNextDueBy(std::chrono::nanoseconds limit)
{
    auto next = std::min_element(m_tasks.begin(), m_tasks.end(), [](const Task& a, const Task& b) {
        return a.due != b.due ? a.due < b.due : a.sequence < b.sequence;
    });
    if (next == m_tasks.end() || next->due > limit)
        return false;
    Task task = std::move(*next);
    m_tasks.erase(next);
    m_now = std::max(m_now, task.due);
    if (!task.hasContext || task.context)
        task.run();
    return true;
}

void ManualClock::advance(std::chrono::nanoseconds by)
{
    const auto target = m_now + by;
    while (runNextDueBy(target)) {
    }
    m_now = target;
}

void ManualClock::runUntilIdle()
{
    while (runNextDueBy(std::chrono::nanoseconds::max())) {
    }
}

} // namespace orvan
