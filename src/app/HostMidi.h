#pragma once

#include "midi/MidiSystem.h"

#include <memory>

namespace orvan {

/// The MIDI system the application talks to on this machine.
std::unique_ptr<MidiSystem> createHostMidiSystem();

} // namespace orvan
