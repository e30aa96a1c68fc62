// The integration battery on the ALSA sequencer (run inside the VM, against the real kernel).
#include "AlsaUnitRig.h"
#include "MidiBattery.h"

namespace orvan::test {

INSTANTIATE_TEST_SUITE_P(Alsa, MidiBattery, testing::Values(RigFactory([] {
                             return std::unique_ptr<UnitRig>(std::make_unique<AlsaUnitRig>());
                         })),
                         [](const testing::TestParamInfo<RigFactory>&) { return std::string("ALSA"); });

} // namespace orvan::test
