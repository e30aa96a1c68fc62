#include "ModelRig.h"

#include "UndoHistory.h"

#include <functional>

namespace orvan::test {
namespace {

/// A unit's rig with the app's history following its model.
struct UndoRig : ModelRig {
    explicit UndoRig(const DeviceSpec& spec, bool present = true)
        : ModelRig(spec, present)
    {
        history.follow(*model);
    }

    /// Undoes or redoes one step and checks the exchange: when `asks` holds channels, first the
    /// +48V question and its Cancel (nothing sent, the history where it was), then its confirm.
    void expectStep(void (UndoHistory::*op)(), const std::optional<QList<int>>& asks, const std::vector<Wire>& expected,
                    const ChannelStates& shown)
    {
        const std::size_t undoable = history.undoCount();
        system.clearSent();
        const auto start = clock.now();
        (history.*op)();
        EXPECT_EQ(model->pendingPhantom(), asks);
        if (asks) {
            model->clearPendingPhantom(); // Cancel
            clock.runUntilIdle();
            EXPECT_TRUE(wire().empty()) << "Cancel sends nothing";
            EXPECT_EQ(history.undoCount(), undoable) << "and leaves the history where it was";
            (history.*op)();
            EXPECT_TRUE(wire().empty()) << "nothing before the confirmation";
            model->confirmPhantom();
        }
        clock.runUntilIdle();
        EXPECT_EQ(wire(start), expected);
        EXPECT_EQ(engine->channels(), shown);
        EXPECT_EQ(history.undoCount(), undoable + (op == &UndoHistory::undo ? -1 : 1));
    }

    UndoHistory history{clock};
};

void notches(UndoRig& rig, int count, const std::function<void()>& notch)
{
    for (int i = 0; i < count; ++i) {
        rig.clock.advance(150ms);
        notch();
    }
}

using UndoHistoryTest = ModelTest;

TEST_F(UndoHistoryTest, EachActionUndoesAndRedoesAsOneStepWithTheMessagesOfAClickAndThePacingOfARecall)
{
    using Step = std::function<void(UndoRig&)>;
    struct Row {
        const char* name; DeviceSpec spec; Step given, action;
        std::vector<Wire> undone; std::optional<QList<int>> undoAsks = {}; std::vector<Wire> redone; std::optional<QList<int>> redoAsks = {};
        bool present = true;
    };
    const auto nothing = [](UndoRig&) {};
    const Row rows[] = {
        {.name = "a click on MUTE", .spec = Catalogue::orvan(), .given = nothing,
         .action = [](UndoRig& r) { r.model->apply(OrvanSwitch::mute, {1}); },
         .undone = {{0, 23, kOff}}, .redone = {{0, 23, kOn}}},
        {.name = "a group toggle on a selection, paced", .spec = Catalogue::dunra(), .given = [](UndoRig& r) { r.model->selectAllOrClear(); },
         .action = [](UndoRig& r) { r.model->applyToSelected(OrvanSwitch::pad); },
         .undone = {{0, 2, kOff}, {12, 18, kOff}}, .redone = {{0, 2, kOn}, {12, 18, kOn}}},
        {.name = "DI, which moved the gain", .spec = Catalogue::dunra(), .given = [](UndoRig& r) { r.reportGain(0, 10); },
         .action = [](UndoRig& r) { r.model->apply(OrvanSwitch::di, {0}); },
         .undone = {{0, 0, kOff}, {12, 9, 10}}, .redone = {{0, 0, kDIOn}}},
        {.name = "a pause of over a second starts a new step", .spec = Catalogue::orvan(),
         .given = [](UndoRig& r) { r.reportGain(0, 10); notches(r, 3, [&r] { r.model->adjustGain(1, {0}); }); r.clock.advance(1100ms); },
         .action = [](UndoRig& r) { notches(r, 2, [&r] { r.model->adjustGain(1, {0}); }); },
         .undone = {{0, 9, 13}}, .redone = {{0, 9, 15}}},
        {.name = "another control starts a new step", .spec = Catalogue::orvan(),
         .given = [](UndoRig& r) { r.reportGain(0, 10); r.model->toggleSelect(0); notches(r, 3, [&r] { r.model->adjustSelected(1); }); },
         .action = [](UndoRig& r) { notches(r, 2, [&r] { r.model->adjustGain(1, {0}); }); },
         .undone = {{0, 9, 13}}, .redone = {{0, 9, 15}}},
        {.name = "a +48V-off click: undo asks first", .spec = Catalogue::dunra(), .given = [](UndoRig& r) { r.report(0, OrvanSwitch::phantom, true); },
         .action = [](UndoRig& r) { r.model->apply(OrvanSwitch::phantom, {0}); },
         .undone = {{0, 4, kOn}}, .undoAsks = QList<int>{0}, .redone = {{0, 4, kOff}}},
        {.name = "a confirmed +48V-on click: redo asks", .spec = Catalogue::dunra(), .given = nothing,
         .action = [](UndoRig& r) { r.model->apply(OrvanSwitch::phantom, {0, 1}); r.model->confirmPhantom(); },
         .undone = {{0, 4, kOff}, {12, 20, kOff}}, .redone = {{0, 4, kOn}, {12, 20, kOn}}, .redoAsks = QList<int>{0, 1}},
        {.name = "a recall that switched +48V on: undo asks nothing, redo asks", .spec = Catalogue::dunra(),
         .given = [](UndoRig& r) { r.reportGain(0, 8); r.reportGain(1, 8); },
         .action = [](UndoRig& r) { r.model->recall(Preset{QUuid(), "P", {{10, false, true, false, false, false}, {8, false, false, false, true, false}}}); },
         .undone = {{0, 4, kOff}, {912, 9, 8}, {924, 23, kOff}},
         .redone = {{0, 4, kOn}, {912, 9, 10}, {924, 23, kOn}}, .redoAsks = QList<int>{0}},
        {.name = "a reset: only what differs, no settling pause without +48V", .spec = Catalogue::orvan(),
         .given = [](UndoRig& r) { for (int c = 0; c < 8; ++c) r.reportGain(c, c == 0 ? 12 : 6); r.report(2, OrvanSwitch::mute, true); },
         .action = [](UndoRig& r) { r.model->powerPressed(); r.model->resetAll(); },
         .undone = {{0, 9, 12}, {12, 39, kOn}}, .redone = {{0, 9, 6}, {12, 39, kOff}}},
        {.name = "demo mode: the panel changes, nothing is sent", .spec = Catalogue::orvan(),
         .given = [](UndoRig&) { DemoMode::shared().setActive(true); },
         .action = [](UndoRig& r) { r.model->apply(OrvanSwitch::mute, {0}); },
         .undone = {}, .redone = {}, .present = false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        DemoMode::shared().setActive(false);
        UndoRig rig(row.spec, row.present);
        row.given(rig);
        rig.clock.runUntilIdle();
        const std::size_t earlier = rig.history.undoCount();
        const ChannelStates before = rig.engine->channels();
        row.action(rig);
        rig.clock.runUntilIdle();
        const ChannelStates after = rig.engine->channels();
        ASSERT_NE(after, before);
        ASSERT_EQ(rig.history.undoCount(), earlier + 1) << "one action, one step";
        rig.expectStep(&UndoHistory::undo, row.undoAsks, row.undone, before);
        rig.expectStep(&UndoHistory::redo, row.redoAsks, row.redone, after);
        DemoMode::shared().setActive(false);
        EXPECT_EQ(rig.history.undoCount(), row.present ? earlier + 1 : 0u) << "demo steps end with demo mode";
    }
}

TEST_F(UndoHistoryTest, OneHistoryAcrossUnitsRestoresItsOwnValuesAndForgetsAnUnpluggedUnit)
{
    // an Orvan and a Dunra on one MIDI system, one history over both
    UndoRig rig(Catalogue::orvan());
    auto dunraDevice = rig.system.addDevice(QStringLiteral("Dunra"));
    OrvanMIDI dunraEngine(Catalogue::dunra(), rig.system, rig.clock);
    RCUModel dunra(dunraEngine, rig.clock);
    rig.history.follow(dunra);
    rig.reportGain(1, 10);
    // three actions, a switch on the unit's front during the last, then its own knob
    rig.model->apply(OrvanSwitch::mute, {0});
    dunra.apply(OrvanSwitch::pad, {0});
    notches(rig, 1, [&] { rig.model->adjustGain(1, {1}); });
    rig.report(3, OrvanSwitch::pad, true);
    notches(rig, 1, [&] { rig.model->adjustGain(1, {1}); });
    rig.reportGain(1, 7);
    EXPECT_EQ(rig.history.undoCount(), 3u) << "reports are not steps";
    // undo brings back the gain from before the action, not the unit's
    rig.system.clearSent();
    rig.history.undo();
    EXPECT_EQ(rig.messages(), (Messages{{25, 10}}));
    // and an unplugged unit's step is gone, in either direction
    rig.system.removeDevice(dunraDevice);
    QCoreApplication::processEvents();
    EXPECT_EQ(rig.history.undoCount(), 1u);
    EXPECT_EQ(rig.history.redoCount(), 1u);
    for (auto op : {&UndoHistory::undo, &UndoHistory::undo, &UndoHistory::redo, &UndoHistory::redo, &UndoHistory::redo})
        (rig.history.*op)();
    EXPECT_EQ(rig.messages(), (Messages{{25, 10}, {7, kOff}, {7, kOn}, {25, 12}}));
    EXPECT_TRUE(rig.system.sentTo(QStringLiteral("Dunra")).empty());
    EXPECT_TRUE(rig.engine->channels()[3].pad) << "the unit's own change is left alone";
    // and a new action ends what could be redone, and the oldest steps fall away after a hundred
    rig.history.undo();
    rig.model->apply(OrvanSwitch::polarity, {0});
    EXPECT_EQ(std::pair(rig.history.undoCount(), rig.history.redoCount()), std::pair(std::size_t(2), std::size_t(0)));
    for (int i = 0; i < 105; ++i)
        rig.model->apply(OrvanSwitch::polarity, {i % 8});
    EXPECT_EQ(rig.history.undoCount(), 100u);
}

TEST_F(UndoHistoryTest, AConfirmedUndoSwitchesOnlyTheChannelsItAskedAboutOn)
{
    UndoRig rig(Catalogue::dunra());
    rig.report(0, OrvanSwitch::phantom, true);
    rig.report(1, OrvanSwitch::phantom, true);
    rig.model->apply(OrvanSwitch::phantom, {0, 1}); // both off
    rig.report(1, OrvanSwitch::phantom, true);      // the unit's front switches channel 2 back on
    rig.history.undo();
    ASSERT_EQ(rig.model->pendingPhantom(), QList<int>{0});
    rig.report(1, OrvanSwitch::phantom, false); // and off again while the question is open
    rig.system.clearSent();
    rig.model->confirmPhantom();
    rig.clock.runUntilIdle();
    EXPECT_EQ(rig.messages(), (Messages{{4, kOn}}));
}

TEST_F(UndoHistoryTest, AGainNeverReportedCountsAsTheBottomOfItsRangeWhenAStepIsUndone)
{
    UndoRig rig(Catalogue::dunra());
    notches(rig, 2, [&] { rig.model->adjustGain(1, {0}); });
    rig.history.undo();
    EXPECT_EQ(rig.messages(), (Messages{{9, 7}, {9, 8}, {9, 6}}));
}

TEST_F(UndoHistoryTest, AnUndoWaitsUntilAPacedSendOfItsUnitHasEnded)
{
    UndoRig rig(Catalogue::orvan());
    rig.model->apply(OrvanSwitch::mute, {0});
    rig.model->resetAll();
    rig.clock.advance(500ms);
    rig.system.clearSent();
    rig.history.undo(); // the reset's messages are still going out
    EXPECT_EQ(rig.history.undoCount(), 2u);
    EXPECT_TRUE(rig.wire().empty());
    rig.clock.runUntilIdle();
    rig.system.clearSent();
    rig.history.undo();
    EXPECT_EQ(rig.messages(), (Messages{{7, kOn}})) << "a gain never reported stays as the reset left it";
}

} // namespace
} // namespace orvan::test
