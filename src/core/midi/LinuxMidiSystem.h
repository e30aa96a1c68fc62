#pragma once

#include "MidiSystem.h"

#include <memory>

namespace orvan {

/// The application's MIDI system: the ALSA sequencer's endpoints first, then JACK's. Either may be
/// missing (no /dev/snd/seq, no JACK server) and is looked for again on every rescan. With
/// `jackWaitsForStart`, JACK opens nothing until MidiSystem::start(). From then on SIGTERM, SIGINT
/// and SIGHUP quit the main loop (quitOnTermination), so JACK's clients are closed on the way out.
std::unique_ptr<MidiSystem> createLinuxMidiSystem(bool jackWaitsForStart = false);

} // namespace orvan
