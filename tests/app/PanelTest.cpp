#include "StageRig.h"

#include "items/BlueDisplayItem.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/LampRowItem.h"
#include "items/PowerButtonItem.h"
#include "items/ReadoutItem.h"
#include "panels/ChannelColumn.h"
#include "panels/DunraPanelItem.h"
#include "panels/MelkoPanelItem.h"
#include "panels/OrvanPanelItem.h"

#include <QLineEdit>
#include <QTest>

using namespace orvan;
using namespace orvan::test;

// --- Every panel ------------------------------------------------------------------------------

// At the top of its range a unit reports gain 24 (the Orvan's detents put its fine position 2 dB
// further), which is more than the two digits are allowed to claim: every readout stops at 70.
TEST(Readouts, NoReadoutShowsMoreThanSeventyAtFullGain)
{
    StageRig rig({"Orvan", "Dunra", "Melko"});
    for (const auto& [unit, channels, top] : {std::tuple{"Orvan", 8, 24}, {"Dunra", 2, 24}, {"Melko", 1, 23}}) {
        for (int ch = 0; ch < channels; ++ch) {
            for (int detent = 0; detent < 3; ++detent) // a new step, then two repeats: fine 0, 1, 2
                rig.report(unit, 16 * ch + 9, top);
        }
    }
    int readouts = 0;
    for (QGraphicsItem* item : rig.stage().items()) {
        if (const auto* readout = dynamic_cast<const ReadoutItem*>(item)) {
            ++readouts;
            EXPECT_LE(readout->shownDecibels().value_or(99), 70) << "readout at " << at(readout).x() << ", " << at(readout).y();
            EXPECT_GE(readout->shownDecibels().value_or(0), 69);
        }
    }
    EXPECT_EQ(readouts, 8 + 2 + 1);
}

// --- The eight-channel panel -----------------------------------------------------------------

TEST(OrvanPanel, EverySwitchRowOfEveryChannelSendsItsControllerWithoutAskingExceptToSwitchPhantomOn)
{
    StageRig rig({"Orvan"});
    auto* panel = rig.stage().orvanPanel();
    ASSERT_EQ(panel->columns().size(), 8);
    for (int ch = 0; ch < 8; ++ch) {
        SCOPED_TRACE("channel " + std::to_string(ch + 1));
        ChannelColumn* column = panel->columns()[ch];
        rig.report("Orvan", 16 * ch + 7, 127); // the unit's own MUTE lights the lamp
        EXPECT_TRUE(column->rows()[4]->isOn());
        rig.midi->clearSent();
        for (int row : {0, 2, 3, 4}) // I/O (does nothing), POL, PAD, MUTE (off again)
            rig.click(at(column->rows()[row]));
        EXPECT_EQ(rig.sent("Orvan"), (Sent{{16 * ch + 5, 127}, {16 * ch + 2, 127}, {16 * ch + 7, 0}}));

        rig.click(at(column->rows()[1])); // +48V only asks
        EXPECT_EQ(rig.orvan().pendingPhantom(), QList<int>{ch});
        EXPECT_EQ(rig.sent("Orvan").size(), 3u);
        rig.orvan().clearPendingPhantom();
    }
}

TEST(OrvanPanel, TheSharedBlockActsOnTheSelection)
{
    StageRig rig({"Orvan"});
    const auto& columns = rig.stage().orvanPanel()->columns();
    const auto& shared = rig.stage().orvanPanel()->sharedButtons(); // I/O, 48V, POLARITY, PAD, MUTE, ALL
    rig.click(at(columns[1]->selectButton()));
    rig.click(at(columns[6]->selectButton()));
    EXPECT_EQ(rig.orvan().selected(), (QList<int>{1, 6}));
    EXPECT_TRUE(columns[6]->selectButton()->isLit() && columns[6]->readout()->isShownSelected());
    for (int row : {0, 2, 3, 4})
        rig.click(at(shared[row]));
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{21, 127}, {101, 127}, {18, 127}, {98, 127}, {23, 127}, {103, 127}}));
    EXPECT_EQ(shared[0]->toolTip(), "I/O is not mapped yet");
    rig.click(at(shared[1]));
    EXPECT_EQ(rig.orvan().pendingPhantom(), (QList<int>{1, 6}));
    EXPECT_EQ(rig.sent("Orvan").size(), 6u) << "+48V asks first";

    rig.click(at(shared[5]));
    EXPECT_TRUE(rig.orvan().selected().isEmpty());
    EXPECT_FALSE(columns[6]->selectButton()->isLit());
    rig.click(at(shared[5]));
    EXPECT_EQ(rig.orvan().selected().size(), 8);
}

TEST(OrvanPanel, ADragStepsItsControlSixPointsAStepOnAReadoutAndEightOnTheKnob)
{
    StageRig rig({"Orvan"});
    rig.report("Orvan", 16 * 2 + 9, 10);
    rig.report("Orvan", 9, 10);
    rig.orvan().toggleSelect(0);
    rig.drag(at(rig.stage().orvanPanel()->columns()[2]->readout()), -20); // 20 points up: 3 steps
    rig.drag(at(rig.stage().orvanPanel()->knob()), -20);                  // 2 steps, for the selection
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{41, 13}, {9, 12}}));
}

TEST(OrvanPanel, WhileTheUnitIsMissingThePanelIsDimmedAndPowerLooksAgainOnceFoundItAsksBeforeAReset)
{
    StageRig rig;
    auto* panel = rig.stage().orvanPanel();
    EXPECT_DOUBLE_EQ(panel->opacity(), 0.5);
    EXPECT_EQ(panel->powerButton()->toolTip(), "Orvan not found. Click to look again.");

    rig.devices["Orvan"] = rig.midi->addDevice("Orvan"); // its notification has not been handled yet: POWER finds it
    rig.click(at(panel->powerButton()));
    EXPECT_TRUE(rig.orvan().midi().isConnected());
    EXPECT_FALSE(rig.orvan().pendingReset()) << "looking again asks nothing";
    EXPECT_DOUBLE_EQ(panel->opacity(), 1.0);
    rig.report("Orvan", 9, 9);
    rig.orvan().toggleSelect(0);
    rig.orvan().toggleSelect(3);
    EXPECT_EQ(panel->statusDisplay()->shownLines(), (QStringList{"Orvan USB: Linked", "Ch 14 27dB"}));
    rig.click(at(panel->powerButton()));
    EXPECT_TRUE(rig.orvan().pendingReset());

    rig.midi->removeDevice(rig.devices.at("Orvan"));
    rig.midi->notifySetupChanged();
    QApplication::processEvents();
    EXPECT_EQ(panel->statusDisplay()->shownLines().value(0), "Orvan: not found");
    EXPECT_DOUBLE_EQ(panel->opacity(), 0.5);
}

TEST(OrvanPanel, PresetButtonsCallTheirOperationsAndTheNameDisplayFollows)
{
    StageRig rig({}, true);
    auto* panel = rig.stage().orvanPanel();
    const auto shown = [&] { return panel->presetDisplay()->shownLines().join('|'); };
    EXPECT_EQ(shown(), "No presets saved");
    for (const QString name : {"Vocals", "Drums", "Keys"}) {
        rig.click(at(panel->presetButtons()[2])); // SAVE: a prompt with the draft, typed over
        QLineEdit* field = rig.shell->orvanDialogs().saveNameField();
        ASSERT_NE(field, nullptr);
        field->selectAll();
        QTest::keyClicks(field, name);
        rig.shell->orvanDialogs().saveDialog()->accept();
        QApplication::processEvents();
    }
    EXPECT_EQ(shown(), "3 Keys");
    // NEXT wraps to the first, PREVIOUS to the last.
    for (const auto& [button, name] : {std::pair{1, "1 Vocals"}, {1, "2 Drums"}, {0, "1 Vocals"}, {0, "3 Keys"}}) {
        rig.click(at(panel->presetButtons()[button]));
        EXPECT_EQ(shown(), name);
    }

    // RECALL "3 Keys", saved with channel 2's +48V on: the change waits for the confirmation.
    const qint64 gain = rig.orvan().midi().channels()[0].gainValue.value_or(0);
    rig.orvan().midi().setGain(0, gain + 5);
    rig.orvan().midi().set(OrvanSwitch::phantom, 1, false);
    rig.click(at(panel->presetButtons()[3]));
    QMessageBox* box = rig.shell->orvanDialogs().recallDialog();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Recall preset Keys?");
    EXPECT_EQ(box->informativeText(), "This preset turns on +48V phantom power. Make sure no ribbon mic or unbalanced "
                                      "source is connected to those channels.");
    EXPECT_EQ(rig.orvan().midi().channels()[0].gainValue, gain + 5);
    StageRig::answer(box, "Recall and turn on +48V");
    rig.clock.runUntilIdle();
    EXPECT_EQ(rig.orvan().midi().channels()[0].gainValue, gain);
    EXPECT_TRUE(rig.orvan().midi().channels()[1].phantom);
}

// --- The two-channel panel -------------------------------------------------------------------

TEST(DunraPanel, AKnobClickCyclesOneTwoBothOne)
{
    StageRig rig({"Dunra"});
    const QPointF knob = at(rig.stage().dunraPanel()->knob());
    for (const QList<int>& selection : std::vector<QList<int>>{{0}, {1}, {0, 1}, {0}}) {
        rig.click(knob);
        EXPECT_EQ(rig.dunra().selected(), selection);
    }
}

TEST(DunraPanel, AReadoutTakesClicksOnItsWholeFrameOnlyWhileConnectedAndAWobbleUnderThreePointsStaysAClick)
{
    StageRig rig;
    auto* panel = rig.stage().dunraPanel();
    rig.click(at(panel->readout(1)));
    EXPECT_TRUE(rig.dunra().selected().isEmpty());

    rig.midi->addDevice("Dunra");
    QApplication::processEvents();
    // Points just inside each corner of the 68 x 48 frame, outside the glass drawn smaller in it.
    for (int channel : {0, 1}) {
        for (QPointF corner : {QPointF(-32.5, -22.5), QPointF(32.5, -22.5), QPointF(32.5, 22.5), QPointF(-32.5, 22.5)}) {
            rig.click(at(panel->readout(channel), corner));
            EXPECT_EQ(rig.dunra().selected(), QList<int>{channel}) << channel << " at " << corner.x() << ", " << corner.y();
            rig.click(at(panel->readout(channel), corner)); // and back
        }
    }
    const QPointF readout = at(panel->readout(1));
    rig.hover(readout);
    rig.press(readout);
    rig.moveHeld(readout + QPointF(1.25, 1.25)); // one pixel each way in the window
    rig.release(readout + QPointF(1.25, 1.25));
    EXPECT_EQ(rig.dunra().selected(), QList<int>{1});
    EXPECT_TRUE(rig.sent("Dunra").empty()) << "and no gain step";
}

TEST(DunraPanel, EveryLampCellSendsItsControllerAndValue)
{
    StageRig rig({"Dunra"});
    auto* panel = rig.stage().dunraPanel();
    for (int c = 0; c < 2; ++c) {
        for (int column : {0, 2, 3, 4}) // DI, PØL, PAD, MUTE
            rig.click(at(panel->cell(c, column)));
    }
    EXPECT_EQ(rig.sent("Dunra"),
              (Sent{{0, 2}, {5, 127}, {2, 127}, {7, 127}, {16, 2}, {21, 127}, {18, 127}, {23, 127}}));
    EXPECT_EQ(panel->cell(1, 2)->toolTip(), QString::fromUtf8("Toggle P\u00D8L on channel 2"));
}

TEST(DunraPanel, ItsPhantomDialogUsesTheDunrasWordingAndCancellingTheSavePromptKeepsTheDraft)
{
    StageRig rig({"Dunra"});
    auto& dialogs = rig.shell->dunraDialogs();
    rig.click(at(rig.stage().dunraPanel()->cell(1, 1))); // channel 2's 48V
    ASSERT_NE(dialogs.phantomDialog(), nullptr);
    EXPECT_EQ(dialogs.phantomDialog()->informativeText(),
              "Make sure no ribbon mic or unbalanced source is connected to Dunra channel(s) 2.");
    StageRig::answer(dialogs.phantomDialog(), "Cancel");

    rig.dunra().beginSave();
    ASSERT_NE(dialogs.saveDialog(), nullptr);
    EXPECT_EQ(dialogs.saveDialog()->windowTitle(), "Save Dunra preset");
    QTest::keyClicks(dialogs.saveNameField(), "Guitar DI");
    dialogs.saveDialog()->reject();
    QApplication::processEvents();
    EXPECT_EQ(rig.dunra().presetNameDraft(), "Guitar DI");
    EXPECT_TRUE(rig.dunra().presets().isEmpty());
    EXPECT_TRUE(rig.sent("Dunra").empty());
}

// --- The listen-only panel -------------------------------------------------------------------

// (In demo mode there is no Melko to send to: only the unit present shows that nothing is sent.)
TEST(MelkoPanel, ItSendsTheUnitNothingWhateverIsDoneToThePanel)
{
    StageRig rig({"Melko"});
    auto* panel = rig.stage().melkoPanel();
    rig.report("Melko", 9, 10); // mid range: a step either way would be sent
    for (int row = 0; row < 5; ++row) {
        rig.click(at(panel->lamp(row)));
        rig.click(at(panel->button(row)));
    }
    for (QGraphicsItem* gain : std::initializer_list<QGraphicsItem*>{panel->display(), panel->knob()}) {
        rig.drag(at(gain), -30);
        rig.wheel(at(gain), 240);
        rig.swipe(at(gain), 30);
    }
    rig.key(Qt::Key_Up);
    rig.clock.runUntilIdle();
    EXPECT_TRUE(rig.sent("Melko").empty());
}
