#include "ModelRig.h"

namespace orvan::test {
namespace {

using PacedSendTest = ModelTest;

TEST_F(PacedSendTest, AWholeUnitGoesOutPacedDIThenPhantomThenASettlingPauseThenGainsAndMuteLast)
{
    struct Case { const char* name; DeviceSpec spec; std::optional<QList<ChannelSnapshot>> recalled; std::vector<Wire> expected; }; // no recall: a reset
    const Case cases[] = {
        {"two-channel reset", Catalogue::dunra(), std::nullopt,
         {{0, 0, kOff}, {12, 16, kOff},                     // DI
          {24, 4, kOff}, {36, 20, kOff},                    // +48V, then 900 ms to settle
          {948, 9, 6}, {960, 2, kOff}, {972, 5, kOff},      // gain, pad, polarity of channel 1
          {984, 25, 6}, {996, 18, kOff}, {1008, 21, kOff},  // and of channel 2
          {1020, 7, kOff}, {1032, 23, kOff}}},              // mute
        {"recall, a gain never reported is not sent", Catalogue::dunra(),
         QList<ChannelSnapshot>{ChannelSnapshot{12, true, true, false, false, std::nullopt}, ChannelSnapshot{std::nullopt, false, false, true, true, true}},
         {{0, 0, kOff}, {12, 16, kDIOn}, {24, 4, kOn}, {36, 20, kOff},
          {948, 9, 12}, {960, 2, kOn}, {972, 5, kOff}, {984, 18, kOff}, {996, 21, kOn},
          {1008, 7, kOff}, {1020, 23, kOn}}},
        {"hand-edited preset shorter than the unit", Catalogue::dunra(), QList<ChannelSnapshot>{ChannelSnapshot{10, false, false, false, false, false}},
         {{0, 0, kOff}, {12, 4, kOff}, {924, 9, 10}, {936, 2, kOff}, {948, 5, kOff}, {960, 7, kOff}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ModelRig rig(c.spec);
        rig.clock.advance(5ms);
        if (c.recalled) {
            rig.model->recall(Preset{QUuid::createUuid(), QStringLiteral("P"), *c.recalled});
        } else {
            rig.model->powerPressed();
            rig.model->resetAll();
        }
        // the caller is not held up, and the unit gets exactly this
        EXPECT_TRUE(rig.wire().empty());
        EXPECT_FALSE(rig.model->pendingReset());
        rig.clock.runUntilIdle();
        EXPECT_EQ(rig.wire(5ms), c.expected);
    }
}

TEST_F(PacedSendTest, AnUnaskedRecallNeverSwitchesPhantomBackOnAfterTheUserTurnedItOff)
{
    // +48V is on and the preset keeps it on, so the recall asks nothing
    const QList<ChannelSnapshot> on(2, ChannelSnapshot{10, false, true, false, false, false});
    PresetStorage::save({Preset{QUuid::createUuid(), QStringLiteral("P"), on}}, Catalogue::dunra());
    ModelRig rig(Catalogue::dunra());
    rig.report(0, OrvanSwitch::phantom, true);
    rig.report(1, OrvanSwitch::phantom, true);
    rig.model->requestRecall();
    ASSERT_FALSE(rig.model->pendingRecall());
    rig.clock.advance(5ms);
    // channel 1's +48V is switched off before the sequence reaches it
    rig.model->apply(OrvanSwitch::phantom, {0});
    rig.clock.runUntilIdle();
    const auto wire = rig.wire();
    EXPECT_EQ(std::ranges::count_if(wire, [](const Wire& w) { return std::get<1>(w) == 4 && std::get<2>(w) == kOn; }), 0);
    EXPECT_FALSE(rig.engine->channels()[0].phantom);
    EXPECT_TRUE(std::ranges::find(wire, Wire{36, 20, kOn}) != wire.end()) << "a channel still on is held on";
}

} // namespace
} // namespace orvan::test
