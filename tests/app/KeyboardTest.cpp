#include "AccessTree.h"

#include "ControlChange.h"
#include "dialogs/ConfirmationDialogs.h"
#include "panels/ChannelColumn.h"
#include "panels/OrvanPanelItem.h"
#include "items/GlossButtonItem.h"
#include "stage/StageScene.h"

#include <QAbstractButton>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace orvan;
using namespace orvan::test;
using namespace orvan::ControlChange;

namespace {

class Keyboard : public ::testing::Test {};

constexpr int kFocusStops = 24 + 68 + 12 + 1; // Dunra, Orvan, Melko, the demo pill

/// A real key press and release, through the window system's path to the window.
void press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(window.windowHandle(), key, modifiers);
    QApplication::processEvents();
}

/// Tabs forward until `path` has the focus; fails after one round.
void tabTo(StageRig& rig, const AccessTree& tree, const QString& path)
{
    for (int i = 0; i <= kFocusStops && tree.focusPath() != path; ++i)
        press(rig.window(), Qt::Key_Tab);
    ASSERT_EQ(tree.focusPath(), path);
}

void clickButton(QMessageBox* box, const QString& text)
{
    for (QAbstractButton* button : box->buttons()) {
        if (button->text() == text)
            button->click();
    }
    QApplication::processEvents();
}

} // namespace

TEST_F(Keyboard, TabVisitsEveryControlPanelByPanelInReadingOrderAndWraps)
{
    StageRig rig;
    AccessTree tree(rig);
    EXPECT_EQ(tree.focusPath(), "");

    QStringList visited;
    for (int i = 0; i < kFocusStops; ++i) {
        press(rig.window(), Qt::Key_Tab);
        visited << tree.focusPath();
    }
    EXPECT_EQ(visited.first(), "Dunra/Power");
    EXPECT_EQ(visited.mid(1, 7), (QStringList{"Dunra/Channel 1 gain", "Dunra/Channel 1 DI", "Dunra/Channel 1 48V",
                                              "Dunra/Channel 1 polarity", "Dunra/Channel 1 pad", "Dunra/Channel 1 mute",
                                              "Dunra/Channel 2 gain"}));
    EXPECT_EQ(visited.indexOf("Orvan/Power"), 24) << "the whole Dunra first";
    EXPECT_EQ(visited.mid(25, 7), (QStringList{"Orvan/Channel 1 gain", "Orvan/Channel 1 I/O", "Orvan/Channel 1 48V",
                                               "Orvan/Channel 1 polarity", "Orvan/Channel 1 pad",
                                               "Orvan/Channel 1 mute", "Orvan/Select channel 1"}));
    EXPECT_EQ(visited.indexOf("Melko/Gain"), 24 + 68);
    EXPECT_EQ(visited.last(), "Demo mode");
    EXPECT_EQ(QSet<QString>(visited.begin(), visited.end()).size(), kFocusStops) << "each control once";

    press(rig.window(), Qt::Key_Tab);
    EXPECT_EQ(tree.focusPath(), "Dunra/Power") << "wraps around";
    press(rig.window(), Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(tree.focusPath(), "Demo mode") << "Shift+Tab goes back";
    press(rig.window(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(tree.focusPath(), visited[kFocusStops - 2]);
}

TEST_F(Keyboard, TheFocusedControlWearsABlueRing)
{
    StageRig rig;
    AccessTree tree(rig);
    const QImage before = rig.window().grab().toImage();
    tabTo(rig, tree, "Orvan/Select channel 4");
    const QImage after = rig.window().grab().toImage();

    const QRect control = tree.window->focusChild()->rect();
    const QRect local(rig.window().mapFromGlobal(control.topLeft()), control.size());
    int blue = 0;
    for (int y = local.top() - 4; y <= local.bottom() + 4; ++y) {
        for (int x = local.left() - 4; x <= local.right() + 4; ++x) {
            const QColor was = before.pixelColor(x, y), now = after.pixelColor(x, y);
            if (now != was && now.blue() > now.red() + 60)
                ++blue;
        }
    }
    EXPECT_GT(blue, local.width()) << "a blue line around the control";
    press(rig.window(), Qt::Key_Escape);
    EXPECT_EQ(tree.focusPath(), "");
    EXPECT_EQ(rig.window().grab().toImage(), before) << "Escape leaves the controls and the ring goes";
}

TEST_F(Keyboard, SpaceOnA48VLampAsksAndSendsNothingUntilConfirmed)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    tabTo(rig, tree, "Orvan/Channel 2 48V");

    press(rig.window(), Qt::Key_Space);
    QMessageBox* dialog = rig.shell->orvanDialogs().phantomDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->defaultButton()->text(), "Cancel");
    press(*dialog, Qt::Key_Return);
    EXPECT_FALSE(rig.orvan().pendingPhantom().has_value()) << "Return takes the default: Cancel";

    press(rig.window(), Qt::Key_Space);
    dialog = rig.shell->orvanDialogs().phantomDialog();
    ASSERT_NE(dialog, nullptr);
    press(*dialog, Qt::Key_Escape);
    EXPECT_FALSE(rig.orvan().pendingPhantom().has_value()) << "Escape cancels";
    EXPECT_TRUE(sent(rig, "Orvan").empty());

    press(rig.window(), Qt::Key_Space);
    clickButton(rig.shell->orvanDialogs().phantomDialog(), "Turn on +48V");
    using Sent = std::vector<std::pair<int, int>>;
    EXPECT_EQ(sent(rig, "Orvan"), (Sent{{controller(1, phantomOffset), kSwitchOnValue}}));
}

TEST_F(Keyboard, SpaceAndReturnPressTheFocusedControlLikeAClick)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    tabTo(rig, tree, "Orvan/Select channel 1");
    press(rig.window(), Qt::Key_Space);
    EXPECT_EQ(rig.orvan().selected(), QList<int>{0});

    tabTo(rig, tree, "Orvan/Mute on selected channels");
    press(rig.window(), Qt::Key_Return);
    using Sent = std::vector<std::pair<int, int>>;
    EXPECT_EQ(sent(rig, "Orvan"), (Sent{{controller(0, muteOffset), kSwitchOnValue}}));

    tabTo(rig, tree, "Dunra/Power");
    tabTo(rig, tree, "Orvan/Power");
    press(rig.window(), Qt::Key_Enter);
    EXPECT_TRUE(rig.orvan().pendingReset()) << "POWER asks";
    EXPECT_EQ(rig.sentTo("Orvan").size(), 1u);
}

TEST_F(Keyboard, ArrowsAndPageKeysStepTheFocusedGainControl)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    rig.report("Orvan", controller(2, gainOffset), 10);
    rig.orvan().toggleSelect(0); // the stage rule alone would move channel 1
    tabTo(rig, tree, "Orvan/Channel 3 gain");

    press(rig.window(), Qt::Key_Up);
    press(rig.window(), Qt::Key_PageUp);
    press(rig.window(), Qt::Key_PageDown);
    press(rig.window(), Qt::Key_Down);
    using Sent = std::vector<std::pair<int, int>>;
    const int gain3 = controller(2, gainOffset);
    EXPECT_EQ(sent(rig, "Orvan"), (Sent{{gain3, 11}, {gain3, 15}, {gain3, 11}, {gain3, 10}}));
}

TEST_F(Keyboard, WithNoGainControlFocusedTheArrowsKeepTheStageRule)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    rig.report("Orvan", controller(0, gainOffset), 10);
    rig.orvan().toggleSelect(0);
    tabTo(rig, tree, "Orvan/Channel 1 pad");

    press(rig.window(), Qt::Key_Up);
    press(rig.window(), Qt::Key_Escape);
    press(rig.window(), Qt::Key_Up);
    using Sent = std::vector<std::pair<int, int>>;
    EXPECT_EQ(sent(rig, "Orvan"), (Sent{{controller(0, gainOffset), 11}, {controller(0, gainOffset), 12}}));
}

TEST_F(Keyboard, AMousePressLeavesTheControlsToTheMouse)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    rig.report("Orvan", controller(0, gainOffset), 10);
    rig.report("Orvan", controller(2, gainOffset), 10);
    tabTo(rig, tree, "Orvan/Channel 3 gain");

    rig.click(StageRig::at(rig.shell->stage().orvanPanel()->columns()[0]->selectButton()));
    press(rig.window(), Qt::Key_Up);

    EXPECT_EQ(tree.focusPath(), "");
    using Sent = std::vector<std::pair<int, int>>;
    EXPECT_EQ(sent(rig, "Orvan"), (Sent{{controller(0, gainOffset), 11}})) << "the stage rule: channel 1, selected";
}

TEST_F(Keyboard, TabSkipsTheDemoPillWhileAUnitIsAttached)
{
    StageRig rig({"Dunra"});
    AccessTree tree(rig);
    press(rig.window(), Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(tree.focusPath(), "Melko/Gain knob");
}

TEST_F(Keyboard, NoKeyOnTheListenOnlyPanelSendsAnything)
{
    StageRig rig({"Melko"});
    AccessTree tree(rig);
    rig.report("Melko", controller(0, gainOffset), 8);
    tabTo(rig, tree, "Melko/Gain");
    int pressed = 0;
    while (tree.focusPath().startsWith("Melko/")) {
        for (Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Up, Qt::Key_PageUp, Qt::Key_Down})
            press(rig.window(), key);
        ++pressed;
        press(rig.window(), Qt::Key_Tab);
    }
    EXPECT_EQ(pressed, 12);
    EXPECT_TRUE(sent(rig, "Melko").empty());
    EXPECT_EQ(tree.control("Melko", "Gain")->text(QAccessible::Value), "24 dB");
}

TEST_F(Keyboard, CtrlQQuits)
{
    StageRig rig;
    QTimer::singleShot(0, &rig.window(), [&rig] { press(rig.window(), Qt::Key_Q, Qt::ControlModifier); });
    // Only a guard: a working Ctrl+Q ends the loop at once with status 0.
    QTimer::singleShot(std::chrono::seconds(20), [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
}
