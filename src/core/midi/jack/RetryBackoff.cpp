#include "RetryBackoff.h"

#include "../../time/Scheduler.h"

namespace orvan {

RetryBackoff::RetryBackoff(Scheduler& scheduler, std::function<void()> attempt)
    : m_scheduler(scheduler)
    , m_attempt(std::move(attempt))
{
}

void RetryBackoff::failed()
{
    if (m_due || m_tries >= kTries)
        return;
    m_due = true;
    m_scheduler.schedule(kFirstPause * (1 << m_tries++), &m_context, [this] {
        m_due = false;
        m_attempt();
    });
}

} // namespace orvan
