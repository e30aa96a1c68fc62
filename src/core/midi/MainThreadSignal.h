#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace orvan {

/// Wakes the main thread from any thread, including a real-time audio thread: raise() is one
/// write() to an eventfd, with no lock and no allocation. The main loop watches the eventfd with a
/// QSocketNotifier and runs the handler there; several raises before it runs give one call.
class MainThreadSignal {
public:
    /// Must be made on the main thread; `handler` runs there.
    explicit MainThreadSignal(std::function<void()> handler);
    ~MainThreadSignal();
    MainThreadSignal(const MainThreadSignal&) = delete;
    MainThreadSignal& operator=(const MainThreadSignal&) = delete;

    /// False when the eventfd could not be made; raise() then does nothing.
    bool isValid() const { return m_fd >= 0; }

    /// Any thread.
    void raise() noexcept;

private:
    void onReadable();

    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_handler;
};

} // namespace orvan
