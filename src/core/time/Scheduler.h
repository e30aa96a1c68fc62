#pragma once

#include <chrono>
#include <functional>

class QObject;

namespace orvan {

/// Runs a task on the main thread after a delay. The task is dropped if `context` is destroyed first.
class Scheduler {
public:
    virtual ~Scheduler() = default;
    virtual void schedule(std::chrono::milliseconds delay, QObject* context, std::function<void()> task) = 0;
};

} // namespace orvan
