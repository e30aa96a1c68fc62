#include "UnitRig.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QTimer>

namespace orvan::test {

constexpr int kLongestSleepMilliseconds = 50;
constexpr int kProcessEndMilliseconds = 10000;

bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds timeout)
{
    // Sleeps in the event loop between events instead of spinning: on the VM's one emulated CPU
    // a spinning test would starve the unit simulator it waits for. The timer only bounds the
    // sleep, so that the deadline is seen.
    QDeadlineTimer deadline(timeout);
    QTimer wake;
    wake.start(kLongestSleepMilliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

bool SimulatedUnit::plug()
{
    m_output.clear();
    m_process = std::make_unique<QProcess>();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(m_process.get(), &QProcess::readyReadStandardOutput, m_process.get(),
                     [this] { m_output += QString::fromUtf8(m_process->readAllStandardOutput()); });
    m_process->start(m_program, m_arguments);
    // Its first line says "ready" once its ports exist.
    return m_process->waitForStarted()
        && waitFor([this] { return m_output.startsWith(QLatin1String("ready")) || m_process->state() != QProcess::Running; })
        && m_process->state() == QProcess::Running;
}

void SimulatedUnit::unplug(bool abruptly)
{
    if (!m_process || m_process->state() == QProcess::NotRunning)
        return;
    abruptly ? m_process->kill() : m_process->terminate();
    if (!m_process->waitForFinished(kProcessEndMilliseconds))
        m_process->kill();
    m_process->waitForFinished();
    m_output += QString::fromUtf8(m_process->readAllStandardOutput());
}

std::vector<ReceivedMessage> SimulatedUnit::received() const
{
    static const QRegularExpression message(QStringLiteral("^(\\d+)((?: [0-9a-f]{2})+)$"));
    std::vector<ReceivedMessage> result;
    for (const QString& line : m_output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (const auto match = message.match(line); match.hasMatch())
            result.push_back({m_stampToTime(match.captured(1).toLongLong()), match.captured(2).trimmed()});
    }
    return result;
}

QStringList SimulatedUnit::receivedBytes() const
{
    QStringList bytes;
    for (const ReceivedMessage& m : received())
        bytes << m.bytes;
    return bytes;
}

void SimulatedUnit::play(const QString& hexBytes, std::chrono::microseconds spacing)
{
    if (!m_process)
        return;
    const QString line = spacing.count() > 0 ? QStringLiteral("+%1 %2").arg(spacing.count()).arg(hexBytes) : hexBytes;
    m_process->write((line + QLatin1Char('\n')).toLatin1());
}

} // namespace orvan::test
