#include "MainThreadSignal.h"

#include <QSocketNotifier>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace orvan {

MainThreadSignal::MainThreadSignal(std::function<void()> handler)
    : m_fd(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
    , m_handler(std::move(handler))
{
    if (m_fd < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { onReadable(); });
}

MainThreadSignal::~MainThreadSignal()
{
    m_notifier.reset();
    if (m_fd >= 0)
        ::close(m_fd);
}

void MainThreadSignal::raise() noexcept
{
    if (m_fd < 0)
        return;
    const std::uint64_t one = 1;
    // A full counter (never in practice) only means the main thread is already due to wake.
    [[maybe_unused]] const auto written = ::write(m_fd, &one, sizeof one);
}

void MainThreadSignal::onReadable()
{
    // Reading resets the counter, so raises that land after this read wake the loop again.
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = ::read(m_fd, &count, sizeof count);
    if (m_handler)
        m_handler();
}

} // namespace orvan
