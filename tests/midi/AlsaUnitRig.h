#pragma once

#include "UnitRig.h"

namespace orvan::test {

/// The ALSA sequencer: the app on AlsaMidiSystem, units as orvan-unit-sim --alsa (one client
/// named like the unit, one port), time stamps in microseconds.
class AlsaUnitRig final : public UnitRig {
public:
    std::unique_ptr<MidiSystem> createSystem() override;
    std::unique_ptr<SimulatedUnit> unit(const QString& displayName, QStringList options = {}) override;
};

} // namespace orvan::test
