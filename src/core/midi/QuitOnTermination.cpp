#include "QuitOnTermination.h"

#include "MainThreadSignal.h"

#include <QCoreApplication>
#include <csignal>

namespace orvan {

namespace {

MainThreadSignal* quitSignal = nullptr;

void onTermination(int)
{
    quitSignal->raise(); // one write(): safe in a signal handler
}

} // namespace

void quitOnTermination()
{
    if (quitSignal || !QCoreApplication::instance())
        return;
    quitSignal = new MainThreadSignal([] { QCoreApplication::quit(); }); // lives as long as the process
    if (!quitSignal->isValid())
        return;
    struct sigaction action {};
    action.sa_handler = onTermination;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(signal, &action, nullptr);
}

} // namespace orvan
