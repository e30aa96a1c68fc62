#include "HostMidi.h"

#include "midi/virtual/VirtualMidiSystem.h"

namespace orvan {

std::unique_ptr<MidiSystem> createHostMidiSystem()
{
    // Until the ALSA and JACK systems are wired in, the app runs over an empty system: it finds no
    // unit, sends nothing, and demo mode works.
    return std::make_unique<VirtualMidiSystem>();
}

} // namespace orvan
