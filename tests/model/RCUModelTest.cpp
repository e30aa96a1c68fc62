#include "ModelRig.h"

#include <gtest/gtest.h>

namespace orvan::test {
namespace {

using Messages = std::vector<std::pair<int, int>>;

constexpr int kOn = 127;
constexpr int kOff = 0;

class RCUModelTest : public ::testing::Test {
protected:
    void SetUp() override { removePresetFiles(); }
    DemoOff demoOff;
};

// --- Selection --------------------------------------------------------------------------------

TEST_F(RCUModelTest, CycleSelectionStepsThroughSingleChannelsThenAll)
{
    struct Case {
        DeviceSpec spec;
        QList<int> start;
        std::vector<QList<int>> expected;
    };
    const Case cases[] = {
        {Catalogue::dunra(), {}, {{0}, {1}, {0, 1}, {0}}},
        {Catalogue::orvan(), {7}, {{0, 1, 2, 3, 4, 5, 6, 7}, {0}, {1}}},
        {Catalogue::orvan(), {2, 5}, {{0}}},
        {Catalogue::orvan(), {6}, {{7}, {0, 1, 2, 3, 4, 5, 6, 7}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spec.title.toStdString());
        // given
        ModelRig rig(c.spec);
        for (int ch : c.start)
            rig.model->toggleSelect(ch);
        for (const QList<int>& expected : c.expected) {
            // when
            rig.model->cycleSelection();
            // then
            EXPECT_EQ(rig.model->selected(), expected);
        }
    }
}

TEST_F(RCUModelTest, SelectAllOrClearEmptiesAThenFillsTheSelection)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.model->toggleSelect(3);
    // when / then
    rig.model->selectAllOrClear();
    EXPECT_TRUE(rig.model->selected().isEmpty());
    rig.model->selectAllOrClear();
    EXPECT_EQ(rig.model->selected(), (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(RCUModelTest, SelectionOperationsDoNothingWhileTheUnitIsAbsent)
{
    // given
    ModelRig rig(Catalogue::orvan(), false);
    // when
    rig.model->toggleSelect(1);
    rig.model->selectAllOrClear();
    rig.model->cycleSelection();
    // then
    EXPECT_TRUE(rig.model->selected().isEmpty());
}

TEST_F(RCUModelTest, ToggleSelectKeepsTheSelectionAscendingAndIgnoresChannelsTheUnitLacks)
{
    // given
    ModelRig rig(Catalogue::orvan());
    // when
    for (int ch : {5, 1, 8, -1, 3, 5})
        rig.model->toggleSelect(ch);
    // then
    EXPECT_EQ(rig.model->selected(), (QList<int>{1, 3}));
}

// --- Group switch toggles ---------------------------------------------------------------------

TEST_F(RCUModelTest, GroupToggleTurnsAllOnUnlessAllAreOnAndAsksBeforePhantomGoesOn)
{
    struct Case {
        const char* name;
        OrvanSwitch which;
        bool first;
        bool second;
        Messages expected;
        std::optional<QList<int>> pendingPhantom;
    };
    const Case cases[] = {
        {"mute, disagreeing", OrvanSwitch::mute, true, false, {{7, kOn}, {23, kOn}}, std::nullopt},
        {"mute, both on", OrvanSwitch::mute, true, true, {{7, kOff}, {23, kOff}}, std::nullopt},
        {"pad, both off", OrvanSwitch::pad, false, false, {{2, kOn}, {18, kOn}}, std::nullopt},
        {"polarity, both on", OrvanSwitch::polarity, true, true, {{5, kOff}, {21, kOff}}, std::nullopt},
        {"phantom, disagreeing", OrvanSwitch::phantom, true, false, {}, QList<int>{0, 1}},
        {"phantom, both off", OrvanSwitch::phantom, false, false, {}, QList<int>{0, 1}},
        {"phantom, both on", OrvanSwitch::phantom, true, true, {{4, kOff}, {20, kOff}}, std::nullopt},
        {"di, both off", OrvanSwitch::di, false, false, {{0, 2}, {16, 2}}, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        ModelRig rig(Catalogue::dunra());
        rig.report(0, c.which, c.first);
        rig.report(1, c.which, c.second);
        // when
        rig.model->apply(c.which, {0, 1});
        // then
        EXPECT_EQ(messages(rig), c.expected);
        EXPECT_EQ(rig.model->pendingPhantom(), c.pendingPhantom);
    }
}

TEST_F(RCUModelTest, ConfirmPhantomSendsThePendingChannelsInListOrderThenClears)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.model->toggleSelect(5);
    rig.model->toggleSelect(2);
    rig.model->applyToSelected(OrvanSwitch::phantom);
    ASSERT_TRUE(messages(rig).empty());
    // when
    rig.model->confirmPhantom();
    // then
    EXPECT_EQ(messages(rig), (Messages{{36, kOn}, {84, kOn}}));
    EXPECT_EQ(rig.model->pendingPhantom(), std::nullopt);
}

TEST_F(RCUModelTest, ConfirmPhantomOnAnAbsentUnitSendsNothingButClears)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.model->apply(OrvanSwitch::phantom, {0});
    rig.unplug();
    // when
    rig.model->confirmPhantom();
    // then
    EXPECT_TRUE(messages(rig).empty());
    EXPECT_EQ(rig.model->pendingPhantom(), std::nullopt);
}

TEST_F(RCUModelTest, AClosedPhantomDialogLeavesNothingToConfirm)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.model->apply(OrvanSwitch::phantom, {0});
    // when
    rig.model->clearPendingPhantom();
    rig.model->confirmPhantom();
    // then
    EXPECT_TRUE(messages(rig).empty());
}

TEST_F(RCUModelTest, TheListenOnlyUnitIsNeverSwitchedEvenInDemoMode)
{
    // given
    ModelRig rig(Catalogue::melko(), false);
    DemoMode::shared().setActive(true);
    const ChannelStates before = rig.engine->channels();
    // when
    for (OrvanSwitch s : allSwitches)
        rig.model->apply(s, {0});
    // then
    EXPECT_EQ(rig.engine->channels(), before);
    EXPECT_EQ(rig.model->pendingPhantom(), std::nullopt);
}

// --- Group gain -------------------------------------------------------------------------------

TEST_F(RCUModelTest, GroupGainStepsMoveAllChannelsByOneCommonStepWithinTheirRanges)
{
    struct Case {
        const char* name;
        DeviceSpec spec;
        std::vector<std::optional<int>> gains; // per channel 0, 1; absent = never reported
        std::vector<bool> di;
        QList<int> channels;
        qint64 steps;
        Messages expected;
    };
    const Case cases[] = {
        {"one channel at the top stops the group", Catalogue::orvan(), {20, 24}, {}, {0, 1}, 1, {}},
        {"both have room", Catalogue::orvan(), {20, 22}, {}, {0, 1}, 1, {{9, 21}, {25, 23}}},
        {"big step limited by least headroom", Catalogue::orvan(), {20, 22}, {}, {0, 1}, 5, {{9, 22}, {25, 24}}},
        {"down limited by least room below", Catalogue::orvan(), {8, 12}, {}, {0, 1}, -5, {{9, 6}, {25, 10}}},
        {"one channel at the bottom stops the group", Catalogue::orvan(), {6, 12}, {}, {0, 1}, -1, {}},
        {"unknown gain counts as the bottom", Catalogue::orvan(), {std::nullopt, 12}, {}, {1, 0}, -1, {}},
        {"unknown gain moves up from the bottom", Catalogue::orvan(), {std::nullopt}, {}, {0}, 2, {{9, 8}}},
        {"list order is sending order", Catalogue::orvan(), {10, 12}, {}, {1, 0}, 1, {{25, 13}, {9, 11}}},
        {"DI channel at 4 cannot go down", Catalogue::dunra(), {4}, {true}, {0}, -1, {}},
        {"DI channel at 5 goes to 4", Catalogue::dunra(), {5}, {true}, {0}, -1, {{9, 4}}},
        {"DI channel above its range pulls the group down", Catalogue::dunra(), {14, 10}, {true, false}, {0, 1}, 1, {{9, 12}, {25, 8}}},
        {"zero steps send nothing", Catalogue::orvan(), {10}, {}, {0}, 0, {}},
        {"empty list sends nothing", Catalogue::orvan(), {10}, {}, {}, 1, {}},
        {"channels outside the unit are dropped", Catalogue::dunra(), {10}, {}, {0, 2, -1}, 1, {{9, 11}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        ModelRig rig(c.spec);
        for (std::size_t i = 0; i < c.di.size(); ++i)
            rig.report(int(i), OrvanSwitch::di, c.di[i]);
        for (std::size_t i = 0; i < c.gains.size(); ++i) {
            if (c.gains[i])
                rig.reportGain(int(i), *c.gains[i]);
        }
        // when
        rig.model->adjustGain(c.steps, c.channels);
        // then
        EXPECT_EQ(messages(rig), c.expected);
    }
}

TEST_F(RCUModelTest, AdjustSelectedStepsTheSelectedChannels)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.reportGain(2, 10);
    rig.reportGain(4, 12);
    rig.model->toggleSelect(4);
    rig.model->toggleSelect(2);
    // when
    rig.model->adjustSelected(-2);
    // then
    EXPECT_EQ(messages(rig), (Messages{{41, 8}, {73, 10}}));
}

TEST_F(RCUModelTest, KnobAngleFollowsTheGainAcrossTheRange)
{
    struct Case {
        const char* name;
        std::optional<int> gain;
        bool di;
        std::optional<int> channel;
        double degrees;
    };
    const Case cases[] = {
        {"no channel", 20, false, std::nullopt, -135},
        {"unknown gain", std::nullopt, false, 0, -135},
        {"bottom", 6, false, 0, -135},
        {"half-way", 15, false, 0, 0},
        {"top", 24, false, 0, 135},
        {"a third", 12, false, 0, -45},
        {"DI half-way", 8, true, 0, 0},
        {"DI above its range", 14, true, 0, 135},
        {"DI below its range", 4, true, 0, -135},
        {"channel the unit lacks", 15, false, 5, -135},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        ModelRig rig(Catalogue::dunra());
        rig.report(0, OrvanSwitch::di, c.di);
        if (c.gain)
            rig.reportGain(0, *c.gain);
        // when / then
        EXPECT_DOUBLE_EQ(rig.model->angle(c.channel), c.degrees);
    }
}

TEST_F(RCUModelTest, KnobAngleUsesTheLowestSelectedChannel)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.reportGain(1, 24);
    rig.reportGain(6, 6);
    EXPECT_DOUBLE_EQ(rig.model->knobAngle(), -135);
    // when
    rig.model->toggleSelect(6);
    rig.model->toggleSelect(1);
    // then
    EXPECT_DOUBLE_EQ(rig.model->knobAngle(), 135);
}

TEST_F(RCUModelTest, PowerAsksForAResetWhenConnectedAndLooksForTheUnitOtherwise)
{
    // given
    ModelRig absent(Catalogue::orvan(), false);
    absent.device = absent.system.addDevice(QStringLiteral("Orvan")); // no notification handled yet
    // when
    absent.model->powerPressed();
    // then
    EXPECT_TRUE(absent.engine->isConnected());
    EXPECT_FALSE(absent.model->pendingReset());
    // when
    absent.model->powerPressed();
    // then
    EXPECT_TRUE(absent.model->pendingReset());
    EXPECT_TRUE(messages(absent).empty());
}

// --- Presets ----------------------------------------------------------------------------------

Preset presetNamed(const QString& name, int channels, bool phantom = false)
{
    return Preset{QUuid::createUuid(), name, QList<ChannelSnapshot>(channels, ChannelSnapshot{10, false, phantom, false, false, std::nullopt})};
}

TEST_F(RCUModelTest, BeginSaveProposesTheCurrentNameOrTheNextNumber)
{
    struct Case {
        const char* name;
        Presets stored;
        std::optional<qint64> steps; // absent: leave the index as loaded
        QString draft;
    };
    const Case cases[] = {
        {"no presets", {}, std::nullopt, QStringLiteral("Preset 1")},
        {"current preset", {presetNamed("A", 8), presetNamed("B", 8)}, 1, QStringLiteral("B")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        PresetStorage::save(c.stored, Catalogue::orvan());
        ModelRig rig(Catalogue::orvan());
        if (c.steps)
            rig.model->stepPreset(*c.steps);
        // when
        rig.model->beginSave();
        // then
        EXPECT_EQ(rig.model->presetNameDraft(), c.draft);
        EXPECT_TRUE(rig.model->savingPreset());
    }
}

TEST_F(RCUModelTest, SavingTrimsTheNameReplacesAnExactMatchAndAppendsOtherwise)
{
    // given
    ModelRig rig(Catalogue::dunra());
    rig.reportGain(0, 9);
    rig.model->setPresetNameDraft(QStringLiteral(" \tVocals  "));
    rig.model->commitSave();
    const Preset first = rig.model->presets().at(0);
    // when: the unit changes and the same name is saved again, then in lower case
    rig.reportGain(0, 11);
    rig.model->setPresetNameDraft(QStringLiteral("Vocals"));
    rig.model->commitSave();
    rig.model->setPresetNameDraft(QStringLiteral("vocals"));
    rig.model->commitSave();
    // then
    const Presets presets = rig.model->presets();
    ASSERT_EQ(presets.size(), 2);
    EXPECT_EQ(presets[0].name, QStringLiteral("Vocals"));
    EXPECT_EQ(presets[0].id, first.id);
    EXPECT_EQ(presets[0].channels[0].gainValue, 11);
    EXPECT_EQ(presets[0].channels[0].di, false);
    EXPECT_EQ(presets[1].name, QStringLiteral("vocals"));
    EXPECT_EQ(rig.model->presetIndex(), 1);
    EXPECT_EQ(PresetStorage::load(Catalogue::dunra()), presets);
}

TEST_F(RCUModelTest, SavingABlankNameOrWhileAbsentSavesNothing)
{
    struct Case {
        const char* name;
        bool present;
        QString draft;
    };
    const Case cases[] = {{"blank", true, QStringLiteral(" \t ")}, {"absent", false, QStringLiteral("Drums")}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        ModelRig rig(Catalogue::orvan(), c.present);
        rig.model->setPresetNameDraft(c.draft);
        // when
        rig.model->commitSave();
        // then
        EXPECT_TRUE(rig.model->presets().isEmpty());
        EXPECT_FALSE(QFile::exists(PresetStorage::url(Catalogue::orvan())));
    }
}

TEST_F(RCUModelTest, SavingInDemoModeChangesMemoryOnlyAndTheFileReturnsWhenDemoEnds)
{
    // given
    PresetStorage::save({presetNamed("Stored", 8)}, Catalogue::orvan());
    ModelRig rig(Catalogue::orvan(), false);
    DemoMode::shared().setActive(true);
    // when
    rig.model->setPresetNameDraft(QStringLiteral("Demo"));
    rig.model->commitSave();
    // then
    EXPECT_EQ(rig.model->presets().size(), 2);
    EXPECT_EQ(PresetStorage::load(Catalogue::orvan()).size(), 1);
    // when
    DemoMode::shared().setActive(false);
    // then
    ASSERT_EQ(rig.model->presets().size(), 1);
    EXPECT_EQ(rig.model->presets()[0].name, QStringLiteral("Stored"));
    EXPECT_EQ(rig.model->presetIndex(), 0);
}

TEST_F(RCUModelTest, StepPresetWrapsAroundBothEnds)
{
    struct Case {
        int count;
        std::vector<qint64> steps;
        qint64 expected;
    };
    const Case cases[] = {
        {1, {1}, 0}, {1, {-1}, 0}, {3, {1, 1, 1}, 0}, {3, {-1}, 2}, {3, {1}, 1}, {3, {-7}, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.count);
        // given
        Presets stored;
        for (int i = 0; i < c.count; ++i)
            stored.append(presetNamed(QString::number(i), 8));
        PresetStorage::save(stored, Catalogue::orvan());
        ModelRig rig(Catalogue::orvan());
        // when
        for (qint64 d : c.steps)
            rig.model->stepPreset(d);
        // then
        EXPECT_EQ(rig.model->presetIndex(), c.expected);
        EXPECT_TRUE(messages(rig).empty());
    }
}

TEST_F(RCUModelTest, RecallAsksOnlyWhenThePresetWouldSwitchPhantomOn)
{
    struct Case {
        const char* name;
        bool presetPhantom;
        bool unitPhantom;
        bool asks;
    };
    const Case cases[] = {
        {"preset off, unit off", false, false, false},
        {"preset on, unit on", true, true, false},
        {"preset off, unit on", false, true, false},
        {"preset on, unit off", true, false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        PresetStorage::save({presetNamed("P", 2, c.presetPhantom)}, Catalogue::dunra());
        ModelRig rig(Catalogue::dunra());
        rig.report(0, OrvanSwitch::phantom, c.unitPhantom);
        rig.report(1, OrvanSwitch::phantom, c.unitPhantom);
        // when
        rig.model->requestRecall();
        rig.clock.runUntilIdle();
        // then
        EXPECT_EQ(rig.model->pendingRecall().has_value(), c.asks);
        EXPECT_EQ(messages(rig).empty(), c.asks);
        if (c.asks) {
            // when the dialog confirms
            rig.model->recall(*rig.model->pendingRecall());
            rig.clock.runUntilIdle();
            // then
            EXPECT_EQ(rig.model->pendingRecall(), std::nullopt);
            EXPECT_EQ(rig.engine->channels()[1].phantom, true);
        }
    }
}

TEST_F(RCUModelTest, ThePhantomQuestionLooksOnlyAtChannelsTheUnitHas)
{
    // given: a hand-edited preset whose third entry would switch +48V on
    Preset p = presetNamed("Long", 3);
    p.channels[2].phantom = true;
    PresetStorage::save({p}, Catalogue::dunra());
    ModelRig rig(Catalogue::dunra());
    // when
    rig.model->requestRecall();
    rig.clock.runUntilIdle();
    // then
    EXPECT_EQ(rig.model->pendingRecall(), std::nullopt);
    for (const auto& [controller, value] : messages(rig))
        EXPECT_LT(controller, 32) << "only the unit's two channels are addressed";
}

// --- Status lines -----------------------------------------------------------------------------

TEST_F(RCUModelTest, StatusLinesShowConnectionSelectionAndTheLowestSelectedGain)
{
    struct Case {
        const char* name;
        bool present;
        QList<int> select;
        std::optional<int> gainOfChannel0;
        std::pair<QString, QString> expected;
    };
    const Case cases[] = {
        {"nothing selected", true, {}, 7, {"Orvan USB: Linked", "Select channel(s)"}},
        {"channels 3 and 1", true, {2, 0}, 7, {"Orvan USB: Linked", "Ch 13 21dB"}},
        {"gain unknown", true, {2, 0}, std::nullopt, {"Orvan USB: Linked", "Ch 13 --dB"}},
        {"top gain", true, {0, 1, 4}, 24, {"Orvan USB: Linked", "Ch 125 70dB"}},
        {"absent", false, {}, std::nullopt, {"Orvan: not found", "Select channel(s)"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        ModelRig rig(Catalogue::orvan(), c.present);
        if (c.gainOfChannel0)
            rig.reportGain(0, *c.gainOfChannel0);
        for (int ch : c.select)
            rig.model->toggleSelect(ch);
        // when / then
        EXPECT_EQ(rig.model->lcdLines(), c.expected);
    }
}

// --- Lifecycle --------------------------------------------------------------------------------

TEST_F(RCUModelTest, ABuiltModelLoadsItsFileAndPointsAtTheFirstPreset)
{
    struct Case {
        int stored;
        std::optional<qint64> index;
    };
    const Case cases[] = {{0, std::nullopt}, {3, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stored);
        // given
        removePresetFiles();
        Presets stored;
        for (int i = 0; i < c.stored; ++i)
            stored.append(presetNamed(QString::number(i), 8));
        if (c.stored > 0)
            PresetStorage::save(stored, Catalogue::orvan());
        // when
        ModelRig rig(Catalogue::orvan());
        // then
        EXPECT_EQ(rig.model->presets(), stored);
        EXPECT_EQ(rig.model->presetIndex(), c.index);
        EXPECT_EQ(rig.model->currentPreset().has_value(), c.stored > 0);
    }
}

TEST_F(RCUModelTest, DisconnectingEmptiesTheSelectionAndReconnectingDoesNotRestoreIt)
{
    // given
    ModelRig rig(Catalogue::orvan());
    rig.model->toggleSelect(0);
    rig.model->toggleSelect(1);
    // when
    rig.unplug();
    // then
    EXPECT_TRUE(rig.model->selected().isEmpty());
    // when
    rig.plugIn();
    // then
    EXPECT_TRUE(rig.engine->isConnected());
    EXPECT_TRUE(rig.model->selected().isEmpty());
}

TEST_F(RCUModelTest, DemoModeSelectsEachUnitsSampleChannels)
{
    struct Case {
        DeviceSpec spec;
        QList<int> expected;
    };
    const Case cases[] = {{Catalogue::orvan(), {3, 4}}, {Catalogue::dunra(), {0}}, {Catalogue::melko(), {}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spec.title.toStdString());
        // given: switched on while running, and started with it on
        DemoMode::shared().setActive(false);
        ModelRig running(c.spec, false);
        if (c.spec.channelCount > 0)
            running.model->toggleSelect(0); // ignored: not connected yet
        // when
        DemoMode::shared().setActive(true);
        ModelRig started(c.spec, false);
        // then
        EXPECT_EQ(running.model->selected(), c.expected);
        EXPECT_EQ(started.model->selected(), c.expected);
    }
}

} // namespace
} // namespace orvan::test
