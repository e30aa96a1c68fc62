#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace orvan {

/// One thread that runs the tasks given to it, one after another, in the order given. It sleeps
/// while it has nothing to do. The destructor runs what is still queued, then joins.
///
/// For calls that may block for seconds (opening and closing JACK clients) and must never hold up
/// the main thread; tasks hand their results back to the main thread themselves.
class SerialWorker {
public:
    SerialWorker();
    ~SerialWorker();
    SerialWorker(const SerialWorker&) = delete;
    SerialWorker& operator=(const SerialWorker&) = delete;

    /// Any thread.
    void post(std::function<void()> task);

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_tasks;
    bool m_stopping = false;
    std::thread m_thread; // last: starts once the queue exists
};

} // namespace orvan
