// Starts either the real application (with its arguments) or an empty Qt window (with
// --one-word-window, one that shows a word), and prints
// "painted <rss-kB>" as soon as the first frame is painted, "settled <rss-kB>" once the tasks
// that frame left behind have run, then quits (with --stay it keeps
// running). The stage benchmark runs it as a child process and measures from spawn to that line.
//
// "startup_probe --jack-startup" is that measurement's driver for JACK: on a private jackd (dummy
// driver) it times the app's first frame with the server running, with no server, and right
// after a copy of the app was killed (whose clients the server still holds), and prints the three.
#include "ApplicationShell.h"
#include "HostMidi.h"
#include "OrvanRCUApp.h"
#include "ResidentSize.h"
#include "stage/StageWindow.h"
#include "time/SystemClock.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cstdio>
#include <jack/jack.h>
#include <vector>

namespace {

/// Reports the first paint of a widget and ends the process, unless asked to stay.
class FirstPaint final : public QObject {
public:
    explicit FirstPaint(bool stay)
        : m_stay(stay)
    {
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && !m_done) {
            m_done = true;
            // Report after this paint has finished; quit after the tasks the paint left behind
            // (the app writes its layer cache there), so that a later start finds it.
            QTimer::singleShot(0, [stay = m_stay] {
                std::printf("painted %ld\n", orvan::bench::residentKilobytes());
                std::fflush(stdout);
                // The resident size once those tasks have run: what the running app keeps.
                QTimer::singleShot(0, [stay] {
                    std::printf("settled %ld\n", orvan::bench::residentKilobytes());
                    std::fflush(stdout);
                    if (!stay)
                        QCoreApplication::exit(0);
                });
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_stay;
    bool m_done = false;
};

/// The empty window the start-up is compared with; with `oneWord`, it writes "dB" in it: the
/// least any window with text pays, since the first text sets up the fonts.
class OneWordWindow final : public QWidget {
public:
    explicit OneWordWindow(bool oneWord)
        : m_oneWord(oneWord)
    {
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (m_oneWord)
            QPainter(this).drawText(20, 20, QStringLiteral("dB"));
    }

private:
    bool m_oneWord;
};

// --- The JACK start-up driver -----------------------------------------------------------------

constexpr int kTrials = 15;
constexpr int kLineTimeoutMs = 20000;
constexpr int kServerTimeoutMs = 10000;
constexpr int kPollMs = 10; // waiting on other processes, which give no event to wait on
constexpr double kSpreadBudget = 0.10;
const char* const kServerName = "orvan-bench-startup";
const char* const kLastClientPort = "OrvanRCU-Melko:Out";

void silent(const char*) {}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// A private jackd on the dummy driver, with one client of ours to look at its ports.
class BenchServer {
public:
    ~BenchServer() { stop(); }
    bool start()
    {
        m_jackd.setStandardOutputFile(QProcess::nullDevice());
        m_jackd.setStandardErrorFile(QProcess::nullDevice());
        m_jackd.start(QStringLiteral("jackd"), {QStringLiteral("-n"), QLatin1String(kServerName), QStringLiteral("-d"),
                                                QStringLiteral("dummy"), QStringLiteral("-r"), QStringLiteral("48000"),
                                                QStringLiteral("-p"), QStringLiteral("256")});
        if (!m_jackd.waitForStarted())
            return false;
        QElapsedTimer t;
        t.start();
        while (!m_client && m_jackd.state() == QProcess::Running && t.elapsed() < kServerTimeoutMs) {
            jack_status_t status{};
            m_client = jack_client_open("orvan-bench-look", JackNoStartServer, &status);
            if (!m_client)
                QThread::msleep(kPollMs);
        }
        return m_client != nullptr;
    }
    void stop()
    {
        if (m_client)
            jack_client_close(m_client);
        m_client = nullptr;
        m_jackd.terminate();
        m_jackd.waitForFinished();
    }
    bool hasPort(const char* name) const { return m_client && jack_port_by_name(m_client, name); }

private:
    QProcess m_jackd;
    jack_client_t* m_client = nullptr;
};

/// Spawns the probe running the app; returns the milliseconds to its first frame (-1: none).
double firstFrame(QProcess& process, const QString& self, bool stay)
{
    QElapsedTimer t;
    t.start();
    process.start(self, stay ? QStringList{QStringLiteral("--stay")} : QStringList{});
    while (process.waitForReadyRead(kLineTimeoutMs)) {
        if (process.readLine().startsWith("painted"))
            return double(t.nsecsElapsed()) / 1e6;
    }
    return -1;
}

double timedStart(const QString& self)
{
    QProcess process;
    const double ms = firstFrame(process, self, false);
    process.waitForFinished(kLineTimeoutMs); // its clients are closed before the next trial
    return ms;
}

int jackStartup(const QString& self)
{
    QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    qputenv("JACK_DEFAULT_SERVER", kServerName);
    jack_set_error_function(silent);
    jack_set_info_function(silent);

    // The three cases take turns, so a machine whose load drifts weighs on all of them alike.
    std::vector<double> running, none, afterKill;
    for (int i = 0; i < kTrials; ++i) {
        BenchServer server;
        if (!server.start()) {
            std::puts("start-up with JACK: jackd did not start");
            return 1;
        }
        running.push_back(timedStart(self));
        // A copy that got as far as opening all its clients, then killed: the server still holds
        // them until it notices.
        QProcess victim;
        firstFrame(victim, self, true);
        QElapsedTimer t;
        t.start();
        while (!server.hasPort(kLastClientPort) && t.elapsed() < kServerTimeoutMs)
            QThread::msleep(kPollMs);
        victim.kill();
        victim.waitForFinished();
        afterKill.push_back(timedStart(self));
        server.stop();
        none.push_back(timedStart(self));
    }

    const double r = median(running), n = median(none), k = median(afterKill);
    const double spread = (std::max({r, n, k}) - std::min({r, n, k})) / std::min({r, n, k});
    std::printf("\nStart-up to first frame, median of %d: JACK server running %.0f ms, no server %.0f ms, "
                "right after a killed copy %.0f ms; spread %.0f %% (budget < %.0f %%): %s\n",
                kTrials, r, n, k, spread * 100, kSpreadBudget * 100, spread < kSpreadBudget ? "met" : "NOT MET");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QByteArray mode = argc > 1 ? QByteArray(argv[1]) : QByteArray();
    if (mode == "--jack-startup") {
        QCoreApplication driver(argc, argv);
        return jackStartup(QCoreApplication::applicationFilePath());
    }
    QApplication application(argc, argv);
    FirstPaint probe(mode == "--stay");

    if (mode == "--empty-window" || mode == "--one-word-window") {
        OneWordWindow window(mode == "--one-word-window");
        window.resize(1298, 468);
        window.installEventFilter(&probe);
        window.show();
        return application.exec();
    }

    orvan::SystemClock& time = orvan::SystemClock::shared();
    orvan::OrvanRCUApp app(orvan::createHostMidiSystem(), time, time);
    orvan::ApplicationShell shell(app);
    shell.window().viewport()->installEventFilter(&probe);
    shell.show();
    orvan::startHostMidiAfterFirstFrame(app.midiSystem(), *shell.window().viewport());
    return application.exec();
}
