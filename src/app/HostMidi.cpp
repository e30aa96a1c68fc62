#include "HostMidi.h"

#include "AfterFirstPaint.h"
#include "midi/LinuxMidiSystem.h"

namespace orvan {

std::unique_ptr<MidiSystem> createHostMidiSystem()
{
    // ALSA sequencer endpoints first, then JACK's; a system that is absent adds nothing.
    return createLinuxMidiSystem(true);
}

void startHostMidiAfterFirstFrame(MidiSystem& system, QWidget& surface)
{
    afterFirstPaint(surface, [&system] { system.start(); });
}

} // namespace orvan
