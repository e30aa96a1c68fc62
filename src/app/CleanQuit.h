#pragma once

#include "midi/MainThreadSignal.h"

#include <QObject>
#include <chrono>

class QWidget;

namespace orvan {

class Scheduler;

/// One way out of the app, taken by SIGTERM (how a session manager ends its clients), SIGINT,
/// Ctrl+Q and closing the window: no question asked, paced sends abandoned (a +48V block already
/// begun is finished, never cut in half), then the event loop ends with status 0, so that main()
/// returns and the MIDI clients close.
class CleanQuit final : public QObject {
public:
    /// Time for the last message sent to leave the MIDI system before its client closes.
    static constexpr std::chrono::milliseconds kLastMessageOut{50};

    /// Installs the signal handlers, the shortcut and the window's close handling. One per process.
    CleanQuit(QWidget& window, Scheduler& scheduler);
    ~CleanQuit() override;

    /// Starts quitting; later calls do nothing more.
    void request();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Scheduler& m_scheduler;
    MainThreadSignal m_signalled;
    bool m_quitting = false;
};

} // namespace orvan
