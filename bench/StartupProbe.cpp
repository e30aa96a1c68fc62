// Starts either the real application (with its arguments) or an empty Qt window, and prints
// "painted <rss-kB>" as soon as the first frame is painted, then quits. The stage benchmark runs
// it as a child process and measures from spawn to that line.
#include "ApplicationShell.h"
#include "HostMidi.h"
#include "OrvanRCUApp.h"
#include "stage/StageWindow.h"
#include "time/SystemClock.h"

#include <QApplication>
#include <QFile>
#include <QTimer>
#include <QWidget>
#include <cstdio>

namespace {

long residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    }
    return -1;
}

/// Reports the first paint of a widget and ends the process.
class FirstPaint final : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && !m_done) {
            m_done = true;
            // Report after this paint has finished.
            QTimer::singleShot(0, [] {
                std::printf("painted %ld\n", residentKilobytes());
                std::fflush(stdout);
                QCoreApplication::exit(0);
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_done = false;
};

} // namespace

int main(int argc, char** argv)
{
    const bool empty = argc > 1 && QByteArray(argv[1]) == "--empty-window";
    QApplication application(argc, argv);
    FirstPaint probe;

    if (empty) {
        QWidget window;
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
    return application.exec();
}
