#pragma once

#include "UnitRig.h"

#include <QStringList>
#include <memory>

namespace orvan {
class MidiSystem;
}

namespace orvan::test {

/// What the PipeWire and soak tests in the VM share: units on the real kernel sequencer, and a
/// look at the sequencer from outside the app.

/// orvan-unit-sim --alsa under `name`, not yet plugged in.
std::unique_ptr<SimulatedUnit> alsaUnit(const QString& name);

/// Holds while `condition` stays true for `span`: how a second copy of a message, late through
/// another path, is ruled out where no clock can be driven.
bool staysTrue(const std::function<bool()>& condition, std::chrono::milliseconds span);

/// The names of the sequencer clients that read from port 0 of the client named `unitName`.
QStringList sequencerReadersOf(const QString& unitName);

/// Every endpoint name `system` lists: "source: <name>" and "destination: <name>" lines.
QStringList endpointNames(MidiSystem& system);

} // namespace orvan::test
