#include "CleanQuit.h"

#include "PacedSender.h"
#include "time/Scheduler.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QShortcut>
#include <QWidget>
#include <csignal>

namespace orvan {

namespace {

MainThreadSignal* signalled = nullptr;

void onQuitSignal(int)
{
    if (signalled)
        signalled->raise(); // one write(): all a signal handler may do here
}

} // namespace

CleanQuit::CleanQuit(QWidget& window, Scheduler& scheduler)
    : QObject(&window)
    , m_scheduler(scheduler)
    , m_signalled([this] { request(); })
{
    signalled = &m_signalled;
    struct sigaction action {};
    action.sa_handler = onQuitSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);

    // The window's own shortcut: while a dialog is open it holds the keyboard, and Escape closes
    // it first, as Cancel.
    auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), &window);
    connect(shortcut, &QShortcut::activated, this, &CleanQuit::request);
    window.installEventFilter(this);
}

CleanQuit::~CleanQuit()
{
    // A signal after this point ends the process the default way.
    signalled = nullptr;
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
}

bool CleanQuit::eventFilter(QObject* watched, QEvent* event)
{
    // The window stays until the loop ends: closing it is a request like the others.
    if (event->type() == QEvent::Close) {
        event->ignore();
        request();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void CleanQuit::request()
{
    if (std::exchange(m_quitting, true))
        return;
    PacedSender::stopAll([this] {
        m_scheduler.schedule(kLastMessageOut, this, [] { QCoreApplication::exit(0); });
    });
}

} // namespace orvan
