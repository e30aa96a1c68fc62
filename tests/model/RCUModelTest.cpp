#include "ModelRig.h"

namespace orvan::test {
namespace {

using RCUModelTest = ModelTest;

Preset presetOf(const QString& name, const QList<bool>& phantom)
{
    QList<ChannelSnapshot> channels;
    for (bool on : phantom)
        channels.append(ChannelSnapshot{10, false, on, false, false, std::nullopt});
    return Preset{QUuid::createUuid(), name, channels};
}
Preset presetNamed(const QString& name) { return presetOf(name, QList<bool>(8, false)); }

TEST_F(RCUModelTest, CycleSelectionStepsThroughSingleChannelsThenAll)
{
    struct Case { DeviceSpec spec; QList<int> start; std::vector<QList<int>> expected; };
    const Case cases[] = {
        {Catalogue::dunra(), {}, {{0}, {1}, {0, 1}, {0}}},
        {Catalogue::orvan(), {6}, {{7}, {0, 1, 2, 3, 4, 5, 6, 7}, {0}}},
        {Catalogue::orvan(), {2, 5}, {{0}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spec.title.toStdString());
        ModelRig rig(c.spec);
        rig.select(c.start);
        for (const QList<int>& expected : c.expected) {
            rig.model->cycleSelection();
            EXPECT_EQ(rig.model->selected(), expected);
        }
    }
}

TEST_F(RCUModelTest, SelectingKeepsChannelsAscendingWithinTheUnitUnpluggingEmptiesItAndPowerLooksForTheUnitAgain)
{
    ModelRig rig(Catalogue::orvan());
    rig.select({5, 1, 8, -1, 3, 5});
    EXPECT_EQ(rig.model->selected(), (QList<int>{1, 3}));
    rig.model->adjustSelected(2);
    EXPECT_EQ(rig.messages(), (Messages{{25, 8}, {57, 8}})) << "a step moves the selected channels";
    rig.model->selectAllOrClear();
    EXPECT_TRUE(rig.model->selected().isEmpty());
    rig.model->selectAllOrClear();
    EXPECT_EQ(rig.model->selected(), (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));

    rig.unplug();
    EXPECT_TRUE(rig.model->selected().isEmpty());
    rig.model->toggleSelect(2);
    rig.model->selectAllOrClear();
    rig.model->cycleSelection();
    rig.device = rig.system.addDevice(rig.spec.portName); // the unit is back, but no notification has been handled yet
    rig.model->powerPressed();
    EXPECT_TRUE(rig.engine->isConnected());
    EXPECT_TRUE(rig.model->selected().isEmpty()) << "nothing selects an absent unit, and reconnecting restores nothing";
    EXPECT_FALSE(rig.model->pendingReset());
    rig.model->powerPressed();
    EXPECT_TRUE(rig.model->pendingReset()) << "connected, power asks before a reset and sends nothing yet";
    EXPECT_EQ(rig.messages().size(), 2u);
}

TEST_F(RCUModelTest, GroupToggleTurnsAllOnUnlessAllAreOnAndAsksBeforePhantomGoesOn)
{
    struct Case { OrvanSwitch which; bool first; bool second; Messages expected; std::optional<QList<int>> pendingPhantom; };
    const Case cases[] = {
        {OrvanSwitch::mute, true, false, {{7, kOn}, {23, kOn}}, std::nullopt},
        {OrvanSwitch::mute, true, true, {{7, kOff}, {23, kOff}}, std::nullopt},
        {OrvanSwitch::pad, false, false, {{2, kOn}, {18, kOn}}, std::nullopt},
        {OrvanSwitch::di, false, false, {{0, kDIOn}, {16, kDIOn}}, std::nullopt},
        {OrvanSwitch::phantom, true, false, {}, QList<int>{0, 1}},
        {OrvanSwitch::phantom, true, true, {{4, kOff}, {20, kOff}}, std::nullopt}, // switching off never asks
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << switchName(c.which) << " " << c.first << c.second);
        ModelRig rig(Catalogue::dunra());
        rig.report(0, c.which, c.first);
        rig.report(1, c.which, c.second);
        rig.model->apply(c.which, {0, 1});
        EXPECT_EQ(rig.messages(), c.expected);
        EXPECT_EQ(rig.model->pendingPhantom(), c.pendingPhantom);
    }
}

TEST_F(RCUModelTest, ConfirmingPhantomSwitchesThePendingChannelsOnInListOrderAndEndsTheQuestionEvenWhenUnplugged)
{
    ModelRig rig(Catalogue::orvan());
    rig.select({5, 2});
    rig.model->applyToSelected(OrvanSwitch::phantom);
    ASSERT_TRUE(rig.messages().empty());
    rig.model->confirmPhantom();
    EXPECT_EQ(rig.messages(), (Messages{{36, kOn}, {84, kOn}}));
    EXPECT_EQ(rig.model->pendingPhantom(), std::nullopt);

    rig.model->apply(OrvanSwitch::phantom, {0});
    rig.unplug();
    rig.model->confirmPhantom();
    EXPECT_EQ(rig.messages().size(), 2u);
    EXPECT_EQ(rig.model->pendingPhantom(), std::nullopt);
}

TEST_F(RCUModelTest, TheListenOnlyUnitIsNeverSwitchedEvenInDemoMode)
{
    ModelRig rig(Catalogue::melko(), false);
    DemoMode::shared().setActive(true);
    const ChannelStates before = rig.engine->channels();
    for (OrvanSwitch s : allSwitches)
        rig.model->apply(s, {0});
    EXPECT_EQ(rig.engine->channels(), before);
    EXPECT_EQ(rig.model->pendingPhantom(), std::nullopt);
}

TEST_F(RCUModelTest, GroupGainStepsMoveAllChannelsByOneCommonStepWithinTheirRanges)
{
    using Gain = std::optional<int>; // absent: never reported
    struct Case { const char* name; DeviceSpec spec; std::vector<Gain> gains; std::vector<bool> di; QList<int> channels; qint64 steps; Messages expected; };
    // gains and DI switches as channels 0, 1 ... report them
    const Case cases[] = {
        {"one channel at the top stops the group", Catalogue::orvan(), {20, 24}, {}, {0, 1}, 1, {}},
        {"both have room", Catalogue::orvan(), {20, 22}, {}, {0, 1}, 1, {{9, 21}, {25, 23}}},
        {"big step limited by least headroom", Catalogue::orvan(), {20, 22}, {}, {0, 1}, 5, {{9, 22}, {25, 24}}},
        {"down limited by least room below", Catalogue::orvan(), {8, 12}, {}, {0, 1}, -5, {{9, 6}, {25, 10}}},
        {"unknown gain counts as the bottom", Catalogue::orvan(), {Gain(), 12}, {}, {1, 0}, -1, {}},
        {"unknown gain moves up from the bottom", Catalogue::orvan(), {Gain()}, {}, {0}, 2, {{9, 8}}},
        {"list order is sending order", Catalogue::orvan(), {10, 12}, {}, {1, 0}, 1, {{25, 13}, {9, 11}}},
        {"DI channel at 4 cannot go down", Catalogue::dunra(), {4}, {true}, {0}, -1, {}},
        {"DI channel at 5 goes to 4", Catalogue::dunra(), {5}, {true}, {0}, -1, {{9, 4}}},
        {"DI channel above its range pulls the group down", Catalogue::dunra(), {14, 10}, {true, false}, {0, 1}, 1, {{9, 12}, {25, 8}}},
        {"channels outside the unit are dropped", Catalogue::dunra(), {10}, {}, {0, 2, -1}, 1, {{9, 11}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ModelRig rig(c.spec);
        for (std::size_t i = 0; i < c.di.size(); ++i)
            rig.report(int(i), OrvanSwitch::di, c.di[i]);
        for (std::size_t i = 0; i < c.gains.size(); ++i) {
            if (c.gains[i])
                rig.reportGain(int(i), *c.gains[i]);
        }
        rig.model->adjustGain(c.steps, c.channels);
        EXPECT_EQ(rig.messages(), c.expected);
    }
}

TEST_F(RCUModelTest, TheKnobFollowsTheLowestSelectedChannelsGainAcrossItsRange)
{
    struct Case { std::optional<int> gain; bool di; QList<int> select; double degrees; }; // of channel 0; channel 1 is at the top
    const Case cases[] = {
        {20, false, {}, -135}, {std::nullopt, false, {0, 1}, -135}, {6, false, {0, 1}, -135}, {15, false, {0, 1}, 0}, {24, false, {0}, 135},
        {12, false, {0, 1}, -45}, {8, true, {0, 1}, 0}, {14, true, {0, 1}, 135}, {4, true, {0, 1}, -135},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "gain " << c.gain.value_or(-1) << ", di " << c.di << ", " << c.select.size() << " selected");
        ModelRig rig(Catalogue::dunra());
        rig.reportGain(1, 24);
        rig.report(0, OrvanSwitch::di, c.di);
        if (c.gain)
            rig.reportGain(0, *c.gain);
        rig.select(c.select);
        EXPECT_DOUBLE_EQ(rig.model->knobAngle(), c.degrees);
    }
}


TEST_F(RCUModelTest, SavingProposesANameTrimsOnlyBlanksReplacesAnExactNameAndAppendsOtherwise)
{
    ModelRig rig(Catalogue::dunra());
    rig.reportGain(0, 9);
    rig.model->beginSave();
    EXPECT_EQ(rig.model->presetNameDraft(), QStringLiteral("Preset 1"));
    EXPECT_TRUE(rig.model->savingPreset());
    rig.model->setPresetNameDraft(QStringLiteral(" \tVocals  "));
    rig.model->commitSave();
    const QUuid id = rig.model->presets().at(0).id;
    // the unit changes, the same name is saved again, then other names
    rig.reportGain(0, 11);
    rig.report(1, OrvanSwitch::di, true);
    for (const char16_t* draft : {u"Vocals", u"vocals", u" \t\nVocals\r\n\t ", u"\u00a0Vocals\u2003", u" \t \t"}) {
        rig.model->setPresetNameDraft(QString::fromUtf16(draft));
        rig.model->commitSave();
    }
    // line breaks and other spaces are part of a name; a blank name saves nothing
    const Presets presets = rig.model->presets();
    ASSERT_EQ(presets.size(), 4);
    EXPECT_EQ(presets[0].id, id);
    EXPECT_EQ(presets[0].channels[0], (ChannelSnapshot{11, false, false, false, false, false}));
    EXPECT_EQ(presets[0].channels[1].di, true);
    const QStringList names{"Vocals", "vocals", "\nVocals\r\n", "\u00a0Vocals\u2003"};
    for (int i = 0; i < names.size(); ++i)
        EXPECT_EQ(presets[i].name, names[i]);
    EXPECT_EQ(rig.model->presetIndex(), 3);
    EXPECT_EQ(PresetStorage::load(Catalogue::dunra()), presets);
    rig.model->beginSave();
    EXPECT_EQ(rig.model->presetNameDraft(), names[3]) << "saving again proposes the current preset's name";
}

TEST_F(RCUModelTest, PresetOperationsDoNothingWhileTheUnitIsAbsent)
{
    PresetStorage::save({presetOf("On", QList<bool>(8, true)), presetNamed("B")}, Catalogue::orvan());
    ModelRig rig(Catalogue::orvan(), false);
    rig.model->setPresetNameDraft(QStringLiteral("Drums"));
    rig.model->beginSave();
    rig.model->commitSave();
    rig.model->stepPreset(1);
    rig.model->requestRecall();
    EXPECT_FALSE(rig.model->savingPreset());
    EXPECT_EQ(rig.model->presets().size(), 2);
    EXPECT_EQ(PresetStorage::load(Catalogue::orvan()).size(), 2);
    EXPECT_EQ(rig.model->presetIndex(), 0);
    EXPECT_FALSE(rig.model->pendingRecall());
}

TEST_F(RCUModelTest, StepPresetWrapsAroundBothEndsAndSendsNothing)
{
    struct Case { int count; std::vector<qint64> steps; qint64 expected; };
    const Case cases[] = {{1, {1}, 0}, {1, {-1}, 0}, {3, {1, 1, 1}, 0}, {3, {-1}, 2}, {3, {1}, 1}, {3, {-7}, 2}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.count);
        Presets stored;
        for (int i = 0; i < c.count; ++i)
            stored.append(presetNamed(QString::number(i)));
        PresetStorage::save(stored, Catalogue::orvan());
        ModelRig rig(Catalogue::orvan());
        for (qint64 d : c.steps)
            rig.model->stepPreset(d);
        EXPECT_EQ(rig.model->presetIndex(), c.expected);
        EXPECT_TRUE(rig.messages().empty());
    }
}

TEST_F(RCUModelTest, RecallAsksOnlyWhenThePresetWouldSwitchPhantomOnOnAChannelTheUnitHas)
{
    struct Case { QList<bool> preset; bool unitOn; bool asks; }; // +48V of each preset entry, and of both channels now
    const Case cases[] = {
        {{false, false}, false, false}, {{true, true}, true, false}, {{false, false}, true, false},
        {{true, true}, false, true},    {{false, true}, false, true}, {{false, false, true}, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "preset " << c.preset.size() << " entries, last " << c.preset.back() << ", unit " << c.unitOn);
        PresetStorage::save({presetOf("P", c.preset)}, Catalogue::dunra());
        ModelRig rig(Catalogue::dunra());
        rig.report(0, OrvanSwitch::phantom, c.unitOn);
        rig.report(1, OrvanSwitch::phantom, c.unitOn);
        rig.model->requestRecall();
        rig.clock.runUntilIdle();
        EXPECT_EQ(rig.model->pendingRecall().has_value(), c.asks);
        EXPECT_EQ(rig.messages().empty(), c.asks);
        if (c.asks) {
            rig.model->recall(*rig.model->pendingRecall()); // the dialog confirms
            rig.clock.runUntilIdle();
            EXPECT_EQ(rig.model->pendingRecall(), std::nullopt);
            EXPECT_TRUE(rig.engine->channels()[1].phantom);
        }
    }
}

TEST_F(RCUModelTest, StatusLinesShowConnectionSelectionAndTheLowestSelectedGain)
{
    struct Case { bool present; QList<int> select; std::optional<int> gainOfChannel0; std::pair<QString, QString> expected; };
    const Case cases[] = {
        {true, {}, 7, {"Orvan USB: Linked", "Select channel(s)"}},
        {true, {2, 0}, 7, {"Orvan USB: Linked", "Ch 13 21dB"}},
        {true, {2, 0}, std::nullopt, {"Orvan USB: Linked", "Ch 13 --dB"}},
        {true, {0, 1, 4}, 24, {"Orvan USB: Linked", "Ch 125 70dB"}},
        {false, {}, std::nullopt, {"Orvan: not found", "Select channel(s)"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected.second.toStdString());
        ModelRig rig(Catalogue::orvan(), c.present);
        if (c.gainOfChannel0)
            rig.reportGain(0, *c.gainOfChannel0);
        rig.select(c.select);
        EXPECT_EQ(rig.model->lcdLines(), c.expected);
    }
}

TEST_F(RCUModelTest, DemoModeSelectsEachUnitsSampleChannelsAndItsPresetsLiveInMemoryOnly)
{
    const std::pair<DeviceSpec, QList<int>> cases[] = {{Catalogue::orvan(), {3, 4}}, {Catalogue::dunra(), {0}}, {Catalogue::melko(), {}}};
    for (const auto& [spec, expected] : cases) {
        SCOPED_TRACE(spec.title.toStdString());
        // one model switched into demo mode while running, one started in it (loading its file all the same)
        DemoMode::shared().setActive(false);
        const Presets stored{presetNamed("Stored")};
        PresetStorage::save(stored, spec);
        ModelRig running(spec, false);
        DemoMode::shared().setActive(true);
        ModelRig started(spec, false);
        EXPECT_EQ(running.model->selected(), expected);
        EXPECT_EQ(started.model->selected(), expected);
        EXPECT_EQ(started.model->presets(), stored);
        // a preset saved in demo mode is gone when demo mode ends; the file never had it
        running.model->setPresetNameDraft(QStringLiteral("Demo"));
        running.model->commitSave();
        EXPECT_EQ(running.model->presets().size(), 2);
        DemoMode::shared().setActive(false);
        EXPECT_EQ(running.model->presets(), stored);
        EXPECT_EQ(PresetStorage::load(spec), stored);
        EXPECT_EQ(running.model->presetIndex(), 0);
    }
}

} // namespace
} // namespace orvan::test
