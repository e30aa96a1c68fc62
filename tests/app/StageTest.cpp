#include "StageRig.h"

#include "items/KnobItem.h"
#include "items/ReadoutItem.h"
#include "panels/ChannelColumn.h"
#include "panels/OrvanPanelItem.h"
#include "stage/DemoPillItem.h"
#include "stage/DragStripItem.h"
#include "stage/FooterItem.h"

#include <QIcon>
#include <QLabel>
#include <QScreen>

using namespace orvan;
using namespace orvan::test;

TEST(Stage, TheWindowIsTheFixedSizeUndecoratedStageTitledOrvanRCU)
{
    StageRig rig;
    EXPECT_EQ(rig.window().windowTitle(), "Orvan RCU");
    EXPECT_TRUE(rig.window().windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(rig.window().minimumSize(), QSize(1298, 468));
    EXPECT_EQ(rig.window().maximumSize(), QSize(1298, 468));
    EXPECT_EQ(rig.window().mapFromScene(QPointF(1622, 585)), QPoint(1298, 468)) << "the whole stage at 0.8";
    EXPECT_TRUE(rig.window().hasFocus()) << "arrow keys work without a click";
    QApplication::processEvents(); // the window is centred once shown (Wayland: WaylandTest)
    EXPECT_EQ(rig.window().frameGeometry().center(), rig.window().screen()->availableGeometry().center());
    // Only the top strip moves the window; the footer names the release.
    EXPECT_NE(dynamic_cast<DragStripItem*>(rig.stage().itemAt(QPointF(700, 10), QTransform())), nullptr);
    EXPECT_EQ(dynamic_cast<DragStripItem*>(rig.stage().itemAt(QPointF(700, 30), QTransform())), nullptr);
    QStringList footers;
    for (QGraphicsItem* item : rig.stage().items(QPointF(40, 570)))
        footers << (dynamic_cast<FooterItem*>(item) ? static_cast<FooterItem*>(item)->text() : QString());
    EXPECT_TRUE(footers.contains("Orvan RCU " ORVAN_PROJECT_VERSION)) << footers.join('|').toStdString();
}

// The window carries the application icon for task switchers and title bars: the same pictures
// as the icon theme's, at every size a window manager asks for. (What the picture shows is the
// icon renderer's test.)
TEST(Stage, TheWindowCarriesTheIconThemesPictureAtEverySize)
{
    StageRig rig;
    QApplication::processEvents(); // the icon is given right after the first frame
    const QIcon icon = rig.window().windowIcon();
    for (int size : {16, 24, 32, 48, 64, 128}) {
        SCOPED_TRACE(std::to_string(size) + " px");
        ASSERT_TRUE(icon.availableSizes().contains(QSize(size, size)));
        const QImage shown = icon.pixmap(QSize(size, size), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
        const QImage theme = QImage(QStringLiteral(ORVAN_ICON_DIR "/%1x%1.png").arg(size)).convertToFormat(QImage::Format_ARGB32);
        EXPECT_EQ(shown, theme);
    }
}

namespace {
/// An Orvan whose channel 1 reports 12 and is selected: the knob steps channel 1.
struct SelectedChannel1 : StageRig {
    SelectedChannel1() : StageRig({"Orvan"})
    {
        report("Orvan", 9, 12);
        orvan().toggleSelect(0);
    }
};
} // namespace

TEST(Stage, AWheelNotchIsOneStepHoweverFinelyTheWheelSplitsItAndATrackpadNinePoints)
{
    SelectedChannel1 rig;
    const QPointF knob = at(rig.stage().orvanPanel()->knob());
    const struct {
        int delta; // per event: eighths of a degree, or trackpad points
        int events;
        int gain; // the one gain sent after them
        bool trackpad = false;
    } turns[] = {
        {15, 8, 13}, // one notch as libinput reports it for many mice
        {60, 2, 14},
        {120, 1, 15}, // a classic wheel
        {-15, 8, 14},
        {240, 1, 16}, // two notches in one event: two steps
        {4, 3, 17, true},
    };
    for (const auto& turn : turns) {
        rig.midi->clearSent();
        for (int i = 0; i < turn.events; ++i)
            turn.trackpad ? rig.swipe(knob, turn.delta) : rig.wheel(knob, turn.delta);
        EXPECT_EQ(rig.sent("Orvan"), (Sent{{9, turn.gain}})) << turn.events << " x " << turn.delta;
    }
}

TEST(Stage, ScrollGoesToTheControlUnderThePointerAndNowhereElse)
{
    SelectedChannel1 rig;
    rig.report("Orvan", 25, 12);
    rig.wheel(at(rig.stage().orvanPanel()->columns()[1]->readout()), 120); // channel 2 only
    rig.wheel(QPointF(800, 20), 120); // the drag strip holds no scroll control
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{25, 13}}));
}

TEST(Stage, ArrowKeysStepTheOrvanSelectionFirstThenTheDunraThenTheMelko)
{
    StageRig rig({}, /*demo*/ true); // demo selects Orvan channels 4 and 5 and Dunra channel 1
    const auto gain = [](RCUModel& m, int ch) { return m.midi().channels()[ch].gainValue; };
    rig.key(Qt::Key_Up);
    EXPECT_EQ(gain(rig.orvan(), 3), 16);
    EXPECT_EQ(gain(rig.orvan(), 4), 13);
    EXPECT_EQ(gain(rig.dunra(), 0), 9);

    rig.orvan().selectAllOrClear(); // clears
    rig.key(Qt::Key_Down);
    EXPECT_EQ(gain(rig.dunra(), 0), 8);

    rig.dunra().selectAllOrClear();
    rig.key(Qt::Key_Up);
    EXPECT_EQ(gain(rig.melko(), 0), 15);
    EXPECT_TRUE(rig.midi->sent().empty());
}

TEST(Stage, TheDemoPillTogglesEveryEngineAndHidesWhenAUnitIsPresent)
{
    StageRig rig;
    DemoPillItem* pill = rig.stage().demoPill();
    ASSERT_TRUE(pill->isVisible());
    for (const bool on : {true, false, true}) {
        rig.click(at(pill));
        for (RCUModel* model : {&rig.orvan(), &rig.dunra(), &rig.melko()})
            EXPECT_EQ(model->midi().isConnected(), on);
        EXPECT_EQ(pill->toolTip(), on ? "Leave demo mode" : "Try the app with sample settings. Nothing is sent to any unit.");
    }
    rig.midi->addDevice("Melko");
    QApplication::processEvents();
    EXPECT_FALSE(pill->isVisible());
    EXPECT_FALSE(DemoMode::shared().active());
}

// --- The Orvan's dialogs: nothing leaves before the confirmation ----------------------------

// Cancelling is checked with the keys (Escape, Return) and on the Dunra panel (its button): these confirm.
TEST(Stage, ThePowerButtonAsksBeforeResettingAndResetsOnceConfirmed)
{
    StageRig rig({"Orvan"});
    rig.orvan().powerPressed();
    QMessageBox* box = rig.shell->orvanDialogs().resetDialog();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Reset all channels?");
    EXPECT_EQ(box->informativeText(), "Sets every channel to 18 dB and turns +48V, pad, polarity and mute off. "
                                      "Mute off means the channels will pass signal.");
    EXPECT_TRUE(rig.sent("Orvan").empty());
    // Wide enough for its first sentence: a narrow box breaks it anywhere, even between "18" and "dB".
    QApplication::processEvents();
    const auto* message = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    EXPECT_GE(message->contentsRect().width(), QFontMetrics(message->font()).horizontalAdvance(
                  "Sets every channel to 18 dB and turns +48V, pad, polarity and mute off."));

    StageRig::answer(box, "Reset all");
    rig.clock.runUntilIdle();
    EXPECT_FALSE(rig.orvan().pendingReset());
    EXPECT_EQ(rig.sent("Orvan").size(), 8u * 5u) << "phantom, gain, pad, polarity, mute x 8";
}

TEST(Stage, ThePhantomDialogNamesTheChannelsAndSwitchesThemOnceConfirmed)
{
    StageRig rig({"Orvan"});
    rig.orvan().apply(OrvanSwitch::phantom, {2, 5});
    QMessageBox* box = rig.shell->orvanDialogs().phantomDialog();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Turn on +48V phantom power?");
    EXPECT_EQ(box->informativeText(), "Make sure no ribbon mic or unbalanced source is connected to channel(s) 3, 6.");
    EXPECT_TRUE(rig.sent("Orvan").empty());

    StageRig::answer(box, "Turn on +48V");
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{36, 127}, {84, 127}}));
    EXPECT_FALSE(rig.orvan().pendingPhantom());
}
