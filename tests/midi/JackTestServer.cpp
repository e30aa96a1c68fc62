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

} // namespace

JackTestServer::JackTestServer(const QString& tag, int periodFrames)
    // A fixed name per use: JACK keeps a small table of server names in shared memory and frees
    // an entry left by a dead server only when a server of the same name starts again, so unique
    // names per run would fill it up on a machine that runs the tests often.
    : m_name(QStringLiteral("orvan-test-%1").arg(tag))
    , m_periodFrames(periodFrames)
{
    jack_set_error_function(silent);
    jack_set_info_function(silent);
}

JackTestServer::~JackTestServer()
{
    stop();
}

void JackTestServer::select() const
{
    qputenv("JACK_DEFAULT_SERVER", m_name.toUtf8());
}

void JackTestServer::forgetStaleServers()
{
    // With no jackd alive, JACK's shared-memory files only describe dead servers; they are safe to
    // remove, and a full server table left by killed test servers would refuse ours.
    const QDir proc(QStringLiteral("/proc"));
    for (const QString& pid : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(proc.filePath(pid + QStringLiteral("/comm")));
        if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == "jackd")
            return;
    }
    const QDir shm(QStringLiteral("/dev/shm"));
    for (const QString& file : shm.entryList({QStringLiteral("jack*")}, QDir::Files))
        QFile::remove(shm.filePath(file));
    // The metadata store (display names) is shared by all servers of the user.
    for (const QString& folder : shm.entryList({QStringLiteral("jack*")}, QDir::Dirs | QDir::NoDotAndDotDot))
        QDir(shm.filePath(folder)).removeRecursively();
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
    // The dummy driver waits this long between cycles: one period's worth of real time.
    const qint64 cycleMicroseconds = m_periodFrames * kMicrosecondsPerSecond / kSampleRate;
    // A generous client timeout: on a loaded machine without real-time priority a slow cycle
    // must not get a client thrown out of the graph.
    m_jackd.start(QStringLiteral("jackd"),
                  {QStringLiteral("-n"), m_name, QStringLiteral("-t"), QString::number(kClientTimeoutMilliseconds),
                   QStringLiteral("-d"), QStringLiteral("dummy"), QStringLiteral("-r"),
                   QString::number(kSampleRate), QStringLiteral("-p"), QString::number(m_periodFrames),
                   QStringLiteral("-w"), QString::number(cycleMicroseconds)});
    if (!m_jackd.waitForStarted())
        return false;
    if (!probe)
        return true;
    return waitFor([this] {
        if (m_jackd.state() != QProcess::Running)
            return true;
        jack_status_t status{};
        m_probe = jack_client_open("orvan-test-probe", JackNoStartServer, &status);
        return m_probe != nullptr;
    }) && m_probe != nullptr;
}

void JackTestServer::stop(int signal)
{
    if (m_probe)
        jack_client_close(m_probe);
    m_probe = nullptr;
    if (m_jackd.state() != QProcess::NotRunning) {
        ::kill(pid_t(m_jackd.processId()), signal);
        if (!m_jackd.waitForFinished(kProcessEndMilliseconds))
            m_jackd.kill();
        m_jackd.waitForFinished();
    }
}

bool JackTestServer::areConnected(const QString& from, const QString& to) const
{
    jack_port_t* port = m_probe ? jack_port_by_name(m_probe, from.toUtf8().constData()) : nullptr;
    return port && jack_port_connected_to(port, to.toUtf8().constData());
}

} // namespace orvan::test
