#include "SerialWorker.h"

namespace orvan {

SerialWorker::SerialWorker()
    : m_thread([this] { run(); })
{
}

SerialWorker::~SerialWorker()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void SerialWorker::post(std::function<void()> task)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_wake.notify_one();
}

void SerialWorker::run()
{
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_tasks.empty(); });
            if (m_tasks.empty())
                return; // stopping, and everything queued has run
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
        }
        task();
    }
}

} // namespace orvan
