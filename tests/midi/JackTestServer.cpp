#include "JackTestServer.h"

#include "UnitRig.h"

#include <QDir>
#include <QFile>
#include <signal.h>
#include <utility>

namespace orvan::test {

namespace {

constexpr int kProcessEndMilliseconds = 5000;
constexpr int kClientTimeoutMilliseconds = 5000;
constexpr qint64 kMicrosecondsPerSecond = 1000000;

void silent(const char*) {}

/// With no jackd alive, JACK's shared-memory files only describe dead servers: removes them, as
/// a full server table left by killed test servers would refuse ours.
void forgetStaleServers()
{
    const QDir proc(QStringLiteral("/proc"));
    for (const QString& pid : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(proc.filePath(pid + QStringLiteral("/comm")));
        if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == "jackd")
            return;
    }
    // Folders too: the metadata store (display names) is shared by all servers of the user.
    const QDir shm(QStringLiteral("/dev/shm"));
    for (const QFileInfo& entry : shm.entryInfoList({QStringLiteral("jack*")}, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (!QFile::remove(entry.filePath()))
            QDir(entry.filePath()).removeRecursively();
    }
}

} // namespace

JackTestServer::JackTestServer(const QString& tag, int periodFrames)
    // A fixed name per use: JACK frees a dead server's entry in its small shared table only when
    // a server of the same name starts again, so unique names per run would fill it up.
    : m_name(QStringLiteral("orvan-test-%1").arg(tag))
    , m_periodFrames(periodFrames)
{
    jack_set_error_function(silent);
    jack_set_info_function(silent);
}

bool JackTestServer::start(bool probe)
{
    // Only before this process has touched JACK: its client library keeps the table mapped.
    static bool firstStart = true;
    if (std::exchange(firstStart, false))
        forgetStaleServers();
    select();
    m_jackd.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_jackd.setStandardOutputFile(QProcess::nullDevice());
    // The dummy driver waits one period's worth of real time between cycles. A generous client
    // timeout: on a loaded machine a slow cycle must not get a client thrown out of the graph.
    const qint64 cycleMicroseconds = m_periodFrames * kMicrosecondsPerSecond / kSampleRate;
    m_jackd.start(QStringLiteral("jackd"), QStringLiteral("-n %1 -t %2 -d dummy -r %3 -p %4 -w %5")
                                               .arg(m_name).arg(kClientTimeoutMilliseconds).arg(kSampleRate).arg(m_periodFrames)
                                               .arg(cycleMicroseconds).split(QLatin1Char(' ')));
    if (!m_jackd.waitForStarted())
        return false;
    return !probe || (waitFor([this] {
                          jack_status_t status{};
                          m_probe = jack_client_open("orvan-test-probe", JackNoStartServer, &status);
                          return m_probe || m_jackd.state() != QProcess::Running;
                      }) && m_probe);
}

void JackTestServer::stop(int signal)
{
    if (m_probe)
        jack_client_close(std::exchange(m_probe, nullptr));
    if (m_jackd.state() != QProcess::NotRunning) {
        ::kill(pid_t(m_jackd.processId()), signal);
        if (!m_jackd.waitForFinished(kProcessEndMilliseconds))
            m_jackd.kill();
        m_jackd.waitForFinished();
    }
}

void JackTestServer::pause(bool paused)
{
    if (m_jackd.state() == QProcess::Running)
        ::kill(pid_t(m_jackd.processId()), paused ? SIGSTOP : SIGCONT);
}

} // namespace orvan::test
