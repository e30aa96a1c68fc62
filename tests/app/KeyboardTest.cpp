#include "AccessRig.h"

#include "ControlChange.h"
#include "items/GlossButtonItem.h"
#include "items/LampRowItem.h"
#include "panels/ChannelColumn.h"
#include "panels/OrvanPanelItem.h"

using namespace orvan;
using namespace orvan::test;
using namespace orvan::ControlChange;

TEST(Keyboard, TabVisitsEveryControlPanelByPanelInReadingOrderAndWraps)
{
    AccessRig rig;
    EXPECT_EQ(rig.focusPath(), "");
    QStringList visited;
    for (int i = 0; i < kFocusStops; ++i) {
        rig.press(Qt::Key_Tab);
        visited << rig.focusPath();
    }
    EXPECT_EQ(visited.mid(0, 8), (QStringList{"Dunra/Power", "Dunra/Channel 1 gain", "Dunra/Channel 1 DI",
                                              "Dunra/Channel 1 48V", "Dunra/Channel 1 polarity", "Dunra/Channel 1 pad",
                                              "Dunra/Channel 1 mute", "Dunra/Channel 2 gain"}));
    EXPECT_EQ(visited.mid(24, 8), (QStringList{"Orvan/Power", "Orvan/Channel 1 gain", "Orvan/Channel 1 I/O",
                                               "Orvan/Channel 1 48V", "Orvan/Channel 1 polarity", "Orvan/Channel 1 pad",
                                               "Orvan/Channel 1 mute", "Orvan/Select channel 1"}));
    EXPECT_EQ(visited.indexOf("Melko/Gain"), 24 + 68);
    EXPECT_EQ(visited.last(), "Demo mode");
    EXPECT_EQ(QSet<QString>(visited.begin(), visited.end()).size(), kFocusStops) << "each control once";

    rig.press(Qt::Key_Tab);
    EXPECT_EQ(rig.focusPath(), "Dunra/Power") << "wraps around";
    rig.press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(rig.focusPath(), "Demo mode") << "Shift+Tab goes back";
    rig.press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(rig.focusPath(), visited[kFocusStops - 2]);
}

TEST(Keyboard, TheFocusedControlWearsABlueRingUntilEscape)
{
    AccessRig rig;
    const QImage before = rig.windowImage();
    rig.tabTo("Orvan/Select channel 4");
    const QImage after = rig.windowImage();
    const QRect control = rig.root->focusChild()->rect();
    const QRect local(rig.window().mapFromGlobal(control.topLeft()), control.size());
    int blue = 0;
    for (int y = local.top() - 4; y <= local.bottom() + 4; ++y) {
        for (int x = local.left() - 4; x <= local.right() + 4; ++x) {
            const QColor now = after.pixelColor(x, y);
            blue += now != before.pixelColor(x, y) && now.blue() > now.red() + 60;
        }
    }
    EXPECT_GT(blue, local.width()) << "a blue line around the control";
    rig.press(Qt::Key_Escape);
    EXPECT_EQ(rig.focusPath(), "");
    EXPECT_EQ(rig.windowImage(), before) << "Escape leaves the controls and the ring goes";
}

TEST(Keyboard, TabSkipsTheDemoPillWhileAUnitIsAttached)
{
    AccessRig rig({"Dunra"});
    rig.press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(rig.focusPath(), "Melko/Gain knob");
}

TEST(Keyboard, SpaceReturnAndEnterPressTheFocusedControlOnceLikeAClick)
{
    AccessRig rig({"Orvan"});
    rig.tabTo("Orvan/Select channel 1");
    rig.press(Qt::Key_Space);
    EXPECT_EQ(rig.orvan().selected(), QList<int>{0});
    rig.tabTo("Orvan/Mute on selected channels");
    rig.press(Qt::Key_Return);
    // A held key presses once: the same lamp must not flicker on and off.
    rig.tabTo("Orvan/Channel 2 pad");
    for (bool repeat : {false, true, true}) {
        QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QString(), repeat);
        QApplication::sendEvent(&rig.window(), &space);
    }
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{controller(0, muteOffset), kSwitchOnValue}, {controller(1, padOffset), kSwitchOnValue}}));
}

TEST(Keyboard, PowerAndA48VLampAskFirstAndTheQuestionsKeysCancel)
{
    AccessRig rig({"Orvan"});
    rig.tabTo("Orvan/Power");
    rig.press(Qt::Key_Enter);
    ASSERT_TRUE(rig.orvan().pendingReset()) << "POWER asks";
    press(*rig.shell->orvanDialogs().resetDialog(), Qt::Key_Escape);
    EXPECT_FALSE(rig.orvan().pendingReset()) << "Escape cancels";

    rig.tabTo("Orvan/Channel 2 48V");
    rig.press(Qt::Key_Space);
    QMessageBox* dialog = rig.shell->orvanDialogs().phantomDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    press(*dialog, Qt::Key_Return);
    EXPECT_FALSE(rig.orvan().pendingPhantom().has_value()) << "Return takes the default: Cancel";
    EXPECT_TRUE(rig.sent("Orvan").empty());
}

TEST(Keyboard, ArrowsStepTheFocusedGainControlAndTheSelectionOtherwise)
{
    AccessRig rig({"Orvan"});
    rig.report("Orvan", controller(0, gainOffset), 10);
    rig.report("Orvan", controller(2, gainOffset), 10);
    rig.orvan().toggleSelect(1); // the stage rule alone would move channel 2
    rig.tabTo("Orvan/Channel 3 gain");
    for (Qt::Key key : {Qt::Key_Up, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Down})
        rig.press(key);
    const int gain1 = controller(0, gainOffset), gain3 = controller(2, gainOffset);
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{gain3, 11}, {gain3, 15}, {gain3, 11}, {gain3, 10}}));

    // A mouse press leaves the controls to the mouse: the arrows follow the selection again.
    rig.midi->clearSent();
    rig.click(at(rig.stage().orvanPanel()->columns()[1]->selectButton())); // clears channel 2
    rig.click(at(rig.stage().orvanPanel()->columns()[0]->selectButton()));
    rig.press(Qt::Key_Up);
    EXPECT_EQ(rig.focusPath(), "");
    rig.tabTo("Orvan/Channel 1 pad"); // no gain control: the stage rule
    rig.press(Qt::Key_Up);
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{gain1, 11}, {gain1, 12}}));
}

TEST(Keyboard, CtrlZUndoesAClickAndCtrlYOrCtrlShiftZRedoWhereverTheFocusIsAndPhantomStillAsks)
{
    AccessRig rig({"Orvan"});
    const int mute1 = controller(0, muteOffset), phantom2 = controller(1, phantomOffset);
    const auto& columns = rig.stage().orvanPanel()->columns();
    rig.click(at(columns[0]->rows()[4])); // MUTE
    rig.press(Qt::Key_Z, Qt::ControlModifier);
    rig.tabTo("Orvan/Channel 3 pad");
    rig.press(Qt::Key_Y, Qt::ControlModifier);
    rig.press(Qt::Key_Z, Qt::ControlModifier);
    rig.press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{mute1, kSwitchOnValue}, {mute1, 0}, {mute1, kSwitchOnValue}, {mute1, 0}, {mute1, kSwitchOnValue}}));

    // +48V switched on with its question: undoing it asks nothing, redoing it asks again
    rig.click(at(columns[1]->rows()[1]));
    StageRig::answer(rig.shell->orvanDialogs().phantomDialog(), "Turn on +48V");
    rig.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(rig.shell->orvanDialogs().phantomDialog(), nullptr);
    rig.midi->clearSent();
    rig.press(Qt::Key_Y, Qt::ControlModifier);
    QMessageBox* dialog = rig.shell->orvanDialogs().phantomDialog();
    ASSERT_NE(dialog, nullptr);
    press(*dialog, Qt::Key_Escape);
    EXPECT_TRUE(rig.sent("Orvan").empty()) << "Escape cancels";
    rig.press(Qt::Key_Y, Qt::ControlModifier);
    StageRig::answer(rig.shell->orvanDialogs().phantomDialog(), "Turn on +48V");
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{phantom2, kSwitchOnValue}}));
}
