#pragma once

#include "midi/MidiSystem.h"

#include <memory>

class QWidget;

namespace orvan {

/// The MIDI system the application talks to on this machine. Its slow part (JACK) waits for
/// MidiSystem::start(); with `opensNothingBeforeStart` (under a session manager) so does ALSA.
std::unique_ptr<MidiSystem> createHostMidiSystem(bool opensNothingBeforeStart = false);

/// Starts `system` once `surface` has painted its first frame: the window never waits for a MIDI
/// server, nor shares the processor with one while it first draws. The engines then learn of the
/// endpoints the way they learn of hot-plugging.
void startHostMidiAfterFirstFrame(MidiSystem& system, QWidget& surface);

} // namespace orvan
