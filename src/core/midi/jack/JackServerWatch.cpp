#include "JackServerWatch.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvan {

namespace {

// Where jackd 2 on Linux puts its sockets ("jackd --version" shows it as its tmpdir).
constexpr auto kSocketFolder = "/dev/shm";
constexpr qint64 kNanosecondsPerSecond = 1000000000;

QString serverName()
{
    const QString named = qEnvironmentVariable("JACK_DEFAULT_SERVER");
    return named.isEmpty() ? QStringLiteral("default") : named;
}

} // namespace

JackServerWatch::JackServerWatch(std::function<void()> started)
    : m_socket(QStringLiteral("%1/jack_%2_%3_0").arg(QLatin1String(kSocketFolder), serverName()).arg(::getuid()))
    , m_started(std::move(started))
{
    m_last = identity();
    m_watcher.addPath(QLatin1String(kSocketFolder));
    QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_watcher, [this] { onFolderChanged(); });
}

JackServerWatch::Identity JackServerWatch::identity() const
{
    struct stat status {};
    if (::stat(m_socket.toLocal8Bit().constData(), &status) != 0)
        return {};
    return {status.st_ino, qint64(status.st_ctim.tv_sec) * kNanosecondsPerSecond + status.st_ctim.tv_nsec};
}

void JackServerWatch::onFolderChanged()
{
    const Identity now = identity();
    if (now == m_last)
        return;
    m_last = now;
    if (now.inode != 0 && m_started)
        m_started();
}

} // namespace orvan
