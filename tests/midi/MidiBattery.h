#pragma once

#include "OrvanMIDI.h"
#include "UnitRig.h"
#include "time/ManualClock.h"

#include <gtest/gtest.h>

namespace orvan::test {

using RigFactory = std::function<std::unique_ptr<UnitRig>()>;

/// The integration battery: the real engines and models over a real MIDI system, against
/// simulated units. Each MIDI system instantiates it with its own rig.
class MidiBattery : public testing::TestWithParam<RigFactory> {
protected:
    void SetUp() override;
    /// A unit named "Orvan", plugged in, once `engine` is linked to it; null if that never happens.
    std::unique_ptr<SimulatedUnit> linkedUnit(const OrvanMIDI& engine);

    std::unique_ptr<UnitRig> rig;
    std::unique_ptr<MidiSystem> system;
    ManualClock clock;
};

} // namespace orvan::test
