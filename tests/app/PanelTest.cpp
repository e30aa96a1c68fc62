#include "StageRig.h"

#include "ControlChange.h"
#include "dialogs/ConfirmationDialogs.h"
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

#include <QAbstractButton>
#include <QLineEdit>
#include <QMessageBox>

using namespace orvan;
using namespace orvan::test;

namespace {

template <typename Panel>
Panel* livePanel(StageRig& rig)
{
    for (QGraphicsItem* item : rig.shell->stage().items()) {
        if (auto* panel = dynamic_cast<Panel*>(item))
            return panel;
    }
    return nullptr;
}

QPointF at(const QGraphicsItem* item, QPointF local = {})
{
    return StageRig::at(item, local);
}

} // namespace

// --- The eight-channel panel -----------------------------------------------------------------

TEST(OrvanPanel, EverySwitchRowOfEveryChannelSendsItsControllerWithoutAskingExceptToSwitchPhantomOn)
{
    StageRig rig({"Orvan"});
    auto* panel = livePanel<OrvanPanelItem>(rig);
    ASSERT_EQ(panel->columns().size(), 8);

    struct Row {
        int index; // in the column: 0 I/O, 1 48V, 2 POL, 3 PAD, 4 MUTE
        int offset;
    };
    for (int ch = 0; ch < 8; ++ch) {
        ChannelColumn* column = panel->columns()[ch];
        EXPECT_DOUBLE_EQ(column->pos().x(), 387 + 75.2 * ch);
        for (const Row row : {Row{2, 5}, Row{3, 2}, Row{4, 7}}) {
            rig.midi->clearSent();
            rig.click(at(column->rows()[row.index]));
            const auto sent = rig.sentTo("Orvan");
            ASSERT_EQ(sent.size(), 1u) << "channel " << ch + 1 << " row " << row.index;
            EXPECT_EQ(sent[0].controller(), 16 * ch + row.offset);
            EXPECT_EQ(sent[0].value(), 127);
        }

        // +48V: the click only asks; nothing leaves until the dialog is confirmed.
        rig.midi->clearSent();
        rig.click(at(column->rows()[1]));
        EXPECT_TRUE(rig.sentTo("Orvan").empty());
        ASSERT_EQ(rig.orvan().pendingPhantom(), QList<int>{ch});
        for (QAbstractButton* button : rig.shell->orvanDialogs().phantomDialog()->buttons()) {
            if (button->text() == "Turn on +48V")
                button->click();
        }
        QApplication::processEvents();
        ASSERT_EQ(rig.sentTo("Orvan").size(), 1u);
        EXPECT_EQ(rig.sentTo("Orvan")[0].controller(), 16 * ch + 4);
    }
}

TEST(OrvanPanel, TheIORowAndIOButtonDoNothing)
{
    StageRig rig({"Orvan"});
    auto* panel = livePanel<OrvanPanelItem>(rig);
    rig.click(at(panel->columns()[0]->rows()[0]));
    rig.click(at(panel->sharedButtons()[0]));
    EXPECT_TRUE(rig.midi->sent().empty());
    EXPECT_DOUBLE_EQ(panel->sharedButtons()[0]->opacity(), 0.55);
    EXPECT_EQ(panel->sharedButtons()[0]->toolTip(), "I/O is not mapped yet");
}

TEST(OrvanPanel, TheSelectButtonTogglesTheChannelAndLightsWithIt)
{
    StageRig rig({"Orvan"});
    auto* column = livePanel<OrvanPanelItem>(rig)->columns()[3];
    rig.click(at(column->selectButton()));
    EXPECT_EQ(rig.orvan().selected(), QList<int>{3});
    EXPECT_TRUE(column->selectButton()->isLit());
    EXPECT_TRUE(column->readout()->isShownSelected());
    rig.click(at(column->selectButton()));
    EXPECT_TRUE(rig.orvan().selected().isEmpty());
    EXPECT_FALSE(column->selectButton()->isLit());
}

TEST(OrvanPanel, TheSharedBlockActsOnTheSelection)
{
    StageRig rig({"Orvan"});
    auto* panel = livePanel<OrvanPanelItem>(rig);
    rig.orvan().toggleSelect(1);
    rig.orvan().toggleSelect(6);

    rig.click(at(panel->sharedButtons()[4])); // MUTE
    const auto sent = rig.sentTo("Orvan");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].controller(), 23);
    EXPECT_EQ(sent[1].controller(), 103);

    rig.click(at(panel->sharedButtons()[5])); // SELECT ALL / CLEAR
    EXPECT_TRUE(rig.orvan().selected().isEmpty());
    rig.click(at(panel->sharedButtons()[5]));
    EXPECT_EQ(rig.orvan().selected().size(), 8);
}

TEST(OrvanPanel, DraggingAReadoutMovesItsOwnChannelBySixPointsAStep)
{
    StageRig rig({"Orvan"});
    rig.report("Orvan", 16 * 2 + 9, 10);
    auto* readout = livePanel<OrvanPanelItem>(rig)->columns()[2]->readout();
    rig.midi->clearSent();

    rig.drag(at(readout), -20); // 20 stage points up: 3 whole steps, delivered at once

    const auto sent = rig.sentTo("Orvan");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].controller(), 41);
    EXPECT_EQ(sent[0].value(), 13);
}

TEST(OrvanPanel, PowerAsksBeforeResetWhenConnectedAndLooksAgainWhenNot)
{
    StageRig rig;
    auto* panel = livePanel<OrvanPanelItem>(rig);
    EXPECT_EQ(panel->powerButton()->toolTip(), "Orvan not found. Click to look again.");
    EXPECT_DOUBLE_EQ(panel->opacity(), 0.5);

    // The unit appears, but its notification has not been handled yet: POWER finds it.
    rig.midi->addDevice("Orvan");
    rig.click(at(panel->powerButton()));
    EXPECT_TRUE(rig.orvan().midi().isConnected());
    EXPECT_FALSE(rig.orvan().pendingReset()) << "looking again asks nothing";
    EXPECT_EQ(panel->powerButton()->toolTip(), "Reset all channels: 18 dB, +48V, pad, polarity and mute off");
    EXPECT_DOUBLE_EQ(panel->opacity(), 1.0);

    rig.click(at(panel->powerButton()));
    EXPECT_TRUE(rig.orvan().pendingReset());
    EXPECT_TRUE(rig.sentTo("Orvan").empty());
}

TEST(OrvanPanel, PresetButtonsCallTheirOperationsAndTheNameDisplayFollows)
{
    StageRig rig({}, true);
    auto* panel = livePanel<OrvanPanelItem>(rig);
    EXPECT_EQ(panel->presetDisplay()->shownLines(), QStringList{"No presets saved"});

    rig.click(at(panel->presetButtons()[2])); // SAVE
    ASSERT_TRUE(rig.orvan().savingPreset());
    rig.shell->orvanDialogs().saveDialog()->accept();
    QApplication::processEvents();
    EXPECT_EQ(panel->presetDisplay()->shownLines(), QStringList{"1 Preset 1"});

    rig.orvan().beginSave();
    rig.orvan().setPresetNameDraft("Drums");
    rig.orvan().commitSave();
    rig.orvan().setSavingPreset(false);
    EXPECT_EQ(panel->presetDisplay()->shownLines(), QStringList{"2 Drums"});
    rig.click(at(panel->presetButtons()[1])); // next wraps to the first
    EXPECT_EQ(panel->presetDisplay()->shownLines(), QStringList{"1 Preset 1"});
    rig.click(at(panel->presetButtons()[0]));
    EXPECT_EQ(panel->presetDisplay()->shownLines(), QStringList{"2 Drums"});
}

TEST(OrvanPanel, TheStatusDisplayShowsTheModelsLines)
{
    StageRig rig({}, true);
    auto* panel = livePanel<OrvanPanelItem>(rig);
    EXPECT_EQ(panel->statusDisplay()->shownLines(), (QStringList{"Orvan USB: Linked", "Ch 45 45dB"}));
}

TEST(OrvanPanel, TooltipsNameTheChannel)
{
    StageRig rig;
    auto* column = livePanel<OrvanPanelItem>(rig)->columns()[4];
    EXPECT_EQ(column->readout()->toolTip(), "Drag up or down, or scroll, to change channel 5 gain");
    EXPECT_EQ(column->rows()[1]->toolTip(), "Toggle 48V on channel 5");
    EXPECT_EQ(column->rows()[2]->toolTip(), QString::fromUtf8("Toggle POL \u00D8 on channel 5"));
    EXPECT_EQ(column->rows()[4]->toolTip(), "Toggle MUTE on channel 5");
    EXPECT_EQ(column->selectButton()->toolTip(), "Select channel 5");
}

TEST(OrvanPanel, TheDemoSampleLightsItsLampsAndReadouts)
{
    StageRig rig({}, true);
    auto* panel = livePanel<OrvanPanelItem>(rig);
    EXPECT_TRUE(panel->columns()[1]->rows()[1]->isOn()) << "channel 2's 48V";
    EXPECT_TRUE(panel->columns()[6]->rows()[4]->isOn()) << "channel 7's mute";
    EXPECT_FALSE(panel->columns()[0]->rows()[1]->isOn());
    EXPECT_EQ(panel->columns()[0]->readout()->shownDecibels(), 24);
    EXPECT_EQ(panel->columns()[7]->readout()->shownDecibels(), 70);
}

// --- The two-channel panel -------------------------------------------------------------------

TEST(DunraPanel, AKnobClickCyclesOneTwoBothOne)
{
    StageRig rig({"Dunra"});
    auto* knob = livePanel<DunraPanelItem>(rig)->knob();
    const std::vector<QList<int>> expected{{0}, {1}, {0, 1}, {0}};
    for (const auto& selection : expected) {
        rig.click(at(knob));
        EXPECT_EQ(rig.dunra().selected(), selection);
    }
    EXPECT_TRUE(rig.sentTo("Dunra").empty());
}

TEST(DunraPanel, AReadoutClickSelectsOnlyWhileConnected)
{
    StageRig rig;
    auto* panel = livePanel<DunraPanelItem>(rig);
    rig.click(at(panel->readout(1)));
    EXPECT_TRUE(rig.dunra().selected().isEmpty());

    rig.midi->addDevice("Dunra");
    QApplication::processEvents();
    rig.click(at(panel->readout(1)));
    EXPECT_EQ(rig.dunra().selected(), QList<int>{1});
}

TEST(DunraPanel, AWobbleUnderThreePointsStaysAClick)
{
    StageRig rig({"Dunra"});
    auto* readout = livePanel<DunraPanelItem>(rig)->readout(0);
    const QPointF centre = at(readout);
    rig.hover(centre);
    rig.press(centre);
    rig.moveHeld(centre + QPointF(1.25, 1.25)); // one pixel each way in the window
    rig.release(centre + QPointF(1.25, 1.25));
    EXPECT_EQ(rig.dunra().selected(), QList<int>{0});
    EXPECT_TRUE(rig.sentTo("Dunra").empty());
}

// Points just inside each corner of a readout's 68 x 48 frame, outside the glass drawn smaller in it.
const QPointF kFrameCorners[] = {{-32.5, -22.5}, {32.5, -22.5}, {32.5, 22.5}, {-32.5, 22.5}};

TEST(DunraPanel, AReadoutTakesClicksOnItsWholeFrame)
{
    StageRig rig({"Dunra"});
    auto* panel = livePanel<DunraPanelItem>(rig);
    for (int channel : {0, 1}) {
        for (QPointF corner : kFrameCorners) {
            rig.click(at(panel->readout(channel), corner));
            EXPECT_EQ(rig.dunra().selected(), QList<int>{channel})
                << "channel " << channel + 1 << " at " << corner.x() << ", " << corner.y();
            rig.click(at(panel->readout(channel), corner)); // and back
            EXPECT_TRUE(rig.dunra().selected().isEmpty());
        }
    }
}

TEST(DunraPanel, EveryLampCellSendsItsControllerAndValue)
{
    StageRig rig({"Dunra"});
    auto* panel = livePanel<DunraPanelItem>(rig);
    struct Cell {
        int column;
        int offset;
        int onValue;
    };
    for (int c = 0; c < 2; ++c) {
        for (const Cell cell : {Cell{0, 0, 2}, Cell{2, 5, 127}, Cell{3, 2, 127}, Cell{4, 7, 127}}) {
            rig.midi->clearSent();
            rig.click(at(panel->cell(c, cell.column)));
            const auto sent = rig.sentTo("Dunra");
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(sent[0].controller(), 16 * c + cell.offset);
            EXPECT_EQ(sent[0].value(), cell.onValue);
        }
    }
    EXPECT_EQ(panel->cell(1, 2)->toolTip(), QString::fromUtf8("Toggle P\u00D8L on channel 2"));
}

TEST(DunraPanel, ItsDialogsUseTheDunrasWording)
{
    StageRig rig({"Dunra"});
    auto& dialogs = rig.shell->dunraDialogs();

    rig.dunra().apply(OrvanSwitch::phantom, {0, 1});
    ASSERT_NE(dialogs.phantomDialog(), nullptr);
    EXPECT_EQ(dialogs.phantomDialog()->informativeText(),
              "Make sure no ribbon mic or unbalanced source is connected to Dunra channel(s) 1, 2.");
    dialogs.phantomDialog()->reject();
    QApplication::processEvents();
    EXPECT_FALSE(rig.dunra().pendingPhantom());

    rig.dunra().powerPressed();
    ASSERT_NE(dialogs.resetDialog(), nullptr);
    EXPECT_EQ(dialogs.resetDialog()->text(), "Reset both Dunra channels?");
    EXPECT_EQ(dialogs.resetDialog()->informativeText(),
              "Sets both channels to 18 dB and turns DI, +48V, pad, polarity and mute off. Mute off means the channels "
              "will pass signal.");
    EXPECT_EQ(rig.shell->orvanDialogs().resetDialog(), nullptr) << "the Orvan's dialogs stay closed";
}

TEST(DunraPanel, CancellingTheSavePromptKeepsTheDraftAsTyped)
{
    StageRig rig({"Dunra"});
    rig.dunra().beginSave();
    auto& dialogs = rig.shell->dunraDialogs();
    ASSERT_NE(dialogs.saveDialog(), nullptr);
    EXPECT_EQ(dialogs.saveDialog()->windowTitle(), "Save Dunra preset");
    dialogs.saveNameField()->setText("Guitar DI");
    emit dialogs.saveNameField()->textEdited("Guitar DI");
    dialogs.saveDialog()->reject();
    QApplication::processEvents();
    EXPECT_EQ(rig.dunra().presetNameDraft(), "Guitar DI");
    EXPECT_FALSE(rig.dunra().savingPreset());
    EXPECT_TRUE(rig.dunra().presets().isEmpty());
}

// --- The listen-only panel -------------------------------------------------------------------

class MelkoPanel : public ::testing::TestWithParam<bool> {};

TEST_P(MelkoPanel, NothingIsEverSentToTheMelkoFromItsPanel)
{
    const bool demo = GetParam();
    StageRig rig(demo ? QStringList{} : QStringList{"Melko"}, demo);
    if (demo) {
        ASSERT_TRUE(rig.melko().midi().demoLoaded());
    }
    auto* panel = livePanel<MelkoPanelItem>(rig);

    for (int row = 0; row < 5; ++row) {
        rig.click(at(panel->lamp(row)));
        rig.click(at(panel->button(row)));
    }
    for (QGraphicsItem* gain : std::initializer_list<QGraphicsItem*>{panel->display(), panel->knob()}) {
        rig.drag(at(gain), -30);
        rig.drag(at(gain), 30);
        rig.wheelLines(at(gain), 2);
        rig.wheelPixels(at(gain), 30);
    }
    rig.key(Qt::Key_Up);
    rig.clock.runUntilIdle();

    EXPECT_TRUE(rig.sentTo("Melko").empty());
}

INSTANTIATE_TEST_SUITE_P(InDemoAndWithTheUnitPresent, MelkoPanel, ::testing::Bool());

TEST(MelkoPanelLook, ItsDisplayTakesTheWheelOnItsWholeFrame)
{
    StageRig rig({}, /*demo*/ true); // demo gain moves, so each step shows
    auto* display = livePanel<MelkoPanelItem>(rig)->display();
    const qint64 before = display->shownDecibels().value_or(0);
    qint64 steps = 0;
    for (QPointF corner : kFrameCorners) {
        rig.wheelLines(at(display, corner), -1);
        EXPECT_EQ(display->shownDecibels(), before - 3 * ++steps) << "at " << corner.x() << ", " << corner.y();
    }
}

TEST(MelkoPanelLook, TheDisplayAndLampsFollowTheUnitsReports)
{
    StageRig rig({"Melko"});
    auto* panel = livePanel<MelkoPanelItem>(rig);
    EXPECT_EQ(panel->display()->shownDecibels(), std::nullopt);
    rig.report("Melko", 9, 6);
    EXPECT_EQ(panel->display()->shownDecibels(), 18);
    rig.report("Melko", 9, 23);
    EXPECT_EQ(panel->display()->shownDecibels(), 69);

    rig.report("Melko", 1, 127); // HPF
    rig.report("Melko", 4, 127); // +48V
    EXPECT_TRUE(panel->lamp(0)->isOn());
    EXPECT_TRUE(panel->lamp(1)->isOn());
    EXPECT_FALSE(panel->lamp(4)->isOn());
    EXPECT_EQ(panel->lamp(1)->toolTip(), "Toggle 48V");
    EXPECT_EQ(panel->listenOnlyLegend()->toolTip(),
              "The Melko's MIDI messages have not been confirmed on hardware yet, so the app does not send to it.");
}
