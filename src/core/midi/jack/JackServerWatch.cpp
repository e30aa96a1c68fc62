#include "JackServerWatch.h"

#include <unistd.h>

namespace orvan {

namespace {

// Where jackd 2 on Linux puts its sockets ("jackd --version" shows it as its tmpdir).
constexpr auto kSocketFolder = "/dev/shm";

QString serverName()
{
    const QString named = qEnvironmentVariable("JACK_DEFAULT_SERVER");
    return named.isEmpty() ? QStringLiteral("default") : named;
}

} // namespace

JackServerWatch::JackServerWatch(std::function<void()> changed)
    : m_socket(QStringLiteral("%1/jack_%2_%3_0").arg(QLatin1String(kSocketFolder), serverName()).arg(::getuid()))
    , m_changed(std::move(changed))
{
    m_watcher.addPath(QLatin1String(kSocketFolder));
    QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_watcher, [this] { onFolderChanged(); });
}

void JackServerWatch::onFolderChanged()
{
    if (m_changed && ::access(m_socket.toLocal8Bit().constData(), F_OK) == 0)
        m_changed();
}

} // namespace orvan
