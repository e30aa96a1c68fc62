#include "ModelRig.h"

#include <gtest/gtest.h>

namespace orvan::test {
namespace {

using namespace std::chrono_literals;

constexpr int kOn = 127;
constexpr int kOff = 0;
constexpr int kDIOn = 2;

class PacedSendTest : public ::testing::Test {
protected:
    void SetUp() override { removePresetFiles(); }
    DemoOff demoOff;
};

TEST_F(PacedSendTest, ResetSendsEveryChannelInPacedOrderWithMuteLast)
{
    struct Case {
        DeviceSpec spec;
        std::vector<Wire> expected;
    };
    const Case cases[] = {
        {Catalogue::dunra(),
         {{0, 0, kOff}, {12, 16, kOff}, // DI
          {24, 4, kOff}, {36, 20, kOff}, // +48V, then 900 ms to settle
          {948, 9, 6}, {960, 2, kOff}, {972, 5, kOff}, // gain, pad, polarity of channel 1
          {984, 25, 6}, {996, 18, kOff}, {1008, 21, kOff},
          {1020, 7, kOff}, {1032, 23, kOff}}}, // mute
        {Catalogue::orvan(),
         {{0, 4, kOff}, {12, 20, kOff}, {24, 36, kOff}, {36, 52, kOff},
          {48, 68, kOff}, {60, 84, kOff}, {72, 100, kOff}, {84, 116, kOff},
          {996, 9, 6}, {1008, 2, kOff}, {1020, 5, kOff},
          {1032, 25, 6}, {1044, 18, kOff}, {1056, 21, kOff},
          {1068, 41, 6}, {1080, 34, kOff}, {1092, 37, kOff},
          {1104, 57, 6}, {1116, 50, kOff}, {1128, 53, kOff},
          {1140, 73, 6}, {1152, 66, kOff}, {1164, 69, kOff},
          {1176, 89, 6}, {1188, 82, kOff}, {1200, 85, kOff},
          {1212, 105, 6}, {1224, 98, kOff}, {1236, 101, kOff},
          {1248, 121, 6}, {1260, 114, kOff}, {1272, 117, kOff},
          {1284, 7, kOff}, {1296, 23, kOff}, {1308, 39, kOff}, {1320, 55, kOff},
          {1332, 71, kOff}, {1344, 87, kOff}, {1356, 103, kOff}, {1368, 119, kOff}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spec.title.toStdString());
        // given
        ModelRig rig(c.spec);
        rig.model->powerPressed();
        rig.clock.advance(5ms);
        // when
        rig.model->resetAll();
        // then: nothing leaves before the scheduler runs, and the caller is not held up
        EXPECT_TRUE(rig.wire().empty());
        EXPECT_FALSE(rig.model->pendingReset());
        rig.clock.runUntilIdle();
        EXPECT_EQ(rig.wire(5ms), c.expected);
    }
}

TEST_F(PacedSendTest, RecallSendsTheStoredStateAndSkipsGainsThatWereNeverReported)
{
    struct Case {
        DeviceSpec spec;
        QList<ChannelSnapshot> channels;
        std::vector<Wire> expected;
    };
    const Case cases[] = {
        {Catalogue::dunra(),
         {ChannelSnapshot{12, true, true, false, false, false}, ChannelSnapshot{std::nullopt, false, false, true, true, true}},
         {{0, 0, kOff}, {12, 16, kDIOn}, {24, 4, kOn}, {36, 20, kOff},
          {948, 9, 12}, {960, 2, kOn}, {972, 5, kOff},
          {984, 18, kOff}, {996, 21, kOn},
          {1008, 7, kOff}, {1020, 23, kOn}}},
        {Catalogue::orvan(),
         {ChannelSnapshot{24, false, true, true, true, std::nullopt}, ChannelSnapshot{7, true, false, false, false, std::nullopt},
          ChannelSnapshot{}, ChannelSnapshot{}, ChannelSnapshot{}, ChannelSnapshot{}, ChannelSnapshot{},
          ChannelSnapshot{20, false, true, false, false, std::nullopt}},
         {{0, 4, kOn}, {12, 20, kOff}, {24, 36, kOff}, {36, 52, kOff},
          {48, 68, kOff}, {60, 84, kOff}, {72, 100, kOff}, {84, 116, kOn},
          {996, 9, 24}, {1008, 2, kOff}, {1020, 5, kOn},
          {1032, 25, 7}, {1044, 18, kOn}, {1056, 21, kOff},
          {1068, 34, kOff}, {1080, 37, kOff}, {1092, 50, kOff}, {1104, 53, kOff},
          {1116, 66, kOff}, {1128, 69, kOff}, {1140, 82, kOff}, {1152, 85, kOff},
          {1164, 98, kOff}, {1176, 101, kOff},
          {1188, 121, 20}, {1200, 114, kOff}, {1212, 117, kOff},
          {1224, 7, kOn}, {1236, 23, kOff}, {1248, 39, kOff}, {1260, 55, kOff},
          {1272, 71, kOff}, {1284, 87, kOff}, {1296, 103, kOff}, {1308, 119, kOff}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spec.title.toStdString());
        // given: the preset switches +48V on, so the recall asks first
        PresetStorage::save({Preset{QUuid::createUuid(), QStringLiteral("P"), c.channels}}, c.spec);
        ModelRig rig(c.spec);
        rig.model->requestRecall();
        rig.clock.runUntilIdle();
        ASSERT_TRUE(rig.model->pendingRecall());
        ASSERT_TRUE(rig.wire().empty());
        // when the dialog confirms
        rig.model->recall(*rig.model->pendingRecall());
        rig.clock.runUntilIdle();
        // then
        EXPECT_EQ(rig.wire(), c.expected);
        EXPECT_TRUE(rig.model->selected().isEmpty());
        EXPECT_EQ(rig.model->presetIndex(), 0);
    }
}

TEST_F(PacedSendTest, ExtraEntriesOfAHandEditedPresetNeverReachTheUnitAndShortListsSendWhatTheyHold)
{
    struct Case {
        const char* name;
        int entries;
        std::vector<Wire> expected;
    };
    const Case cases[] = {
        {"longer", 5,
         {{0, 0, kOff}, {12, 16, kOff}, {24, 4, kOff}, {36, 20, kOff},
          {948, 9, 10}, {960, 2, kOff}, {972, 5, kOff}, {984, 25, 10}, {996, 18, kOff}, {1008, 21, kOff},
          {1020, 7, kOff}, {1032, 23, kOff}}},
        {"shorter", 1, {{0, 0, kOff}, {12, 4, kOff}, {924, 9, 10}, {936, 2, kOff}, {948, 5, kOff}, {960, 7, kOff}}},
        {"empty", 0, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        ModelRig rig(Catalogue::dunra());
        const Preset p{QUuid::createUuid(), QStringLiteral("Hand-edited"),
                       QList<ChannelSnapshot>(c.entries, ChannelSnapshot{10, false, false, false, false, false})};
        // when
        rig.model->recall(p);
        rig.clock.runUntilIdle();
        // then
        EXPECT_EQ(rig.wire(), c.expected);
    }
}

TEST_F(PacedSendTest, TwoSequencesRunAlongsideAndInterleave)
{
    // given
    ModelRig rig(Catalogue::dunra());
    rig.model->resetAll();
    rig.clock.advance(6ms);
    // when
    rig.model->resetAll();
    rig.clock.advance(29ms);
    // then
    EXPECT_EQ(rig.wire(), (std::vector<Wire>{{0, 0, kOff}, {6, 0, kOff}, {12, 16, kOff}, {18, 16, kOff}, {24, 4, kOff}, {30, 4, kOff}}));
    rig.clock.runUntilIdle();
    EXPECT_EQ(rig.wire().size(), 24u);
}

TEST_F(PacedSendTest, OtherOperationsRunBetweenTheStepsOfASequence)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.model->resetAll();
    rig.clock.advance(20ms);
    // when
    rig.model->apply(OrvanSwitch::mute, {3});
    // then
    const auto wire = rig.wire();
    ASSERT_EQ(wire.size(), 3u);
    EXPECT_EQ(wire[2], (Wire{20, 55, kOn}));
}

TEST_F(PacedSendTest, AnUnconfirmedRecallNeverSwitchesPhantomBackOnAfterTheUserTurnedItOff)
{
    // given: +48V is on, the preset keeps it on, so the recall asks nothing
    PresetStorage::save({Preset{QUuid::createUuid(), QStringLiteral("P"),
                                {ChannelSnapshot{10, false, true, false, false, false}, ChannelSnapshot{10, false, true, false, false, false}}}},
                        Catalogue::dunra());
    ModelRig rig(Catalogue::dunra());
    rig.report(0, OrvanSwitch::phantom, true);
    rig.report(1, OrvanSwitch::phantom, true);
    rig.model->requestRecall();
    ASSERT_FALSE(rig.model->pendingRecall());
    rig.clock.advance(5ms);
    // when: channel 1's +48V is switched off before the sequence reaches it
    rig.model->apply(OrvanSwitch::phantom, {0});
    rig.clock.runUntilIdle();
    // then
    const auto wire = rig.wire();
    const auto phantomOn = std::ranges::count(wire, true, [](const Wire& w) { return w.controller == 4 && w.value == kOn; });
    EXPECT_EQ(phantomOn, 0);
    EXPECT_FALSE(rig.engine->channels()[0].phantom);
    EXPECT_TRUE(rig.engine->channels()[1].phantom);
    EXPECT_TRUE(std::ranges::find(wire, Wire{36, 20, kOn}) != wire.end()) << "a channel still on is held on";
}

TEST_F(PacedSendTest, ASequenceRunsOnAfterADisconnectButSendsNothingMore)
{
    // given
    ModelRig rig(Catalogue::dunra());
    rig.model->resetAll();
    rig.clock.advance(15ms);
    // when
    rig.unplug();
    rig.clock.runUntilIdle();
    // then
    EXPECT_EQ(rig.wire().size(), 2u);
    EXPECT_EQ(rig.clock.pendingTasks(), 0u);
}

} // namespace
} // namespace orvan::test
