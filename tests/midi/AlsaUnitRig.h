#pragma once

#include "UnitRig.h"

namespace orvan::test {

/// The ALSA sequencer: the app on AlsaMidiSystem, units as orvan-unit-sim --alsa (one client
/// named like the unit, one port), time stamps in microseconds.
class AlsaUnitRig final : public UnitRig {
public:
    std::unique_ptr<MidiSystem> createSystem() override;
    std::unique_ptr<SimulatedUnit> unit(const QString& displayName, QStringList options = {}) override;
    /// The sequencer's clock advances by timer ticks (4 ms at Debian's 250 Hz): a stamp taken
    /// next to a late tick can be off by up to one.
    std::chrono::microseconds stampError() const override { return std::chrono::milliseconds(4); }
};

} // namespace orvan::test
