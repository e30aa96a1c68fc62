#include "HostMidi.h"

#include "AfterFirstPaint.h"
#include "midi/GatedMidiSystem.h"
#include "midi/LinuxMidiSystem.h"

namespace orvan {

std::unique_ptr<MidiSystem> createHostMidiSystem(bool opensNothingBeforeStart)
{
    // ALSA sequencer endpoints first, then JACK's; a system that is absent adds nothing.
    if (opensNothingBeforeStart)
        return std::make_unique<GatedMidiSystem>([] { return createLinuxMidiSystem(true); });
    return createLinuxMidiSystem(true);
}

void startHostMidiAfterFirstFrame(MidiSystem& system, QWidget& surface)
{
    afterFirstPaint(surface, [&system] { system.start(); });
}

} // namespace orvan
