#include "HostMidi.h"

#include "midi/LinuxMidiSystem.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>

namespace orvan {

namespace {

/// Starts the system after the first paint of the widget it watches, then removes itself.
class StartAfterFirstPaint final : public QObject {
public:
    StartAfterFirstPaint(MidiSystem& system, QWidget& surface)
        : QObject(&surface)
        , m_system(system)
    {
        surface.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // After this paint has reached the screen.
            QTimer::singleShot(0, this, [this] {
                m_system.start();
                deleteLater();
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    MidiSystem& m_system;
};

} // namespace

std::unique_ptr<MidiSystem> createHostMidiSystem()
{
    // ALSA sequencer endpoints first, then JACK's; a system that is absent adds nothing.
    return createLinuxMidiSystem(true);
}

void startHostMidiAfterFirstFrame(MidiSystem& system, QWidget& surface)
{
    new StartAfterFirstPaint(system, surface);
}

} // namespace orvan
