// The integration battery on the ALSA sequencer (run inside the VM, against the real kernel).
#include "MidiBattery.h"

#include "midi/alsa/AlsaMidiSystem.h"

namespace orvan::test {

/// The app on AlsaMidiSystem, units as orvan-unit-sim --alsa (one client named like the unit,
/// one port), time stamps in microseconds.
class AlsaUnitRig final : public UnitRig {
public:
    std::unique_ptr<MidiSystem> createSystem() override { return std::make_unique<AlsaMidiSystem>(); }
    std::unique_ptr<SimulatedUnit> unit(const QString& displayName) override
    {
        return std::make_unique<SimulatedUnit>(QStringLiteral(ORVAN_UNIT_SIM_PATH),
                                               QStringList{QStringLiteral("--alsa"), QStringLiteral("--name"), displayName},
                                               [](qint64 microseconds) { return std::chrono::microseconds(microseconds); });
    }
    /// The sequencer's clock advances by timer ticks (4 ms at Debian's 250 Hz): a stamp taken
    /// next to a late tick can be off by up to one.
    std::chrono::microseconds stampError() const override { return std::chrono::milliseconds(4); }
};

INSTANTIATE_TEST_SUITE_P(Alsa, MidiBattery, testing::Values(RigFactory([] { return std::make_unique<AlsaUnitRig>(); })),
                         [](const auto&) { return std::string("ALSA"); });

} // namespace orvan::test
