// The integration battery on a private jackd (dummy driver): no sound card needed.
#include "JackUnitRig.h"
#include "MidiBattery.h"

namespace orvan::test {

INSTANTIATE_TEST_SUITE_P(Jack, MidiBattery, testing::Values(RigFactory([]() -> std::unique_ptr<UnitRig> {
                             auto rig = std::make_unique<JackUnitRig>();
                             return rig->start() ? std::move(rig) : nullptr;
                         })),
                         [](const auto&) { return std::string("JACK"); });

} // namespace orvan::test
