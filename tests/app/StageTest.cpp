#include "StageRig.h"

#include "AppVersion.h"

#include "ControlChange.h"
#include "dialogs/ConfirmationDialogs.h"
#include "items/KnobItem.h"
#include "items/ReadoutItem.h"
#include "panels/ChannelColumn.h"
#include "panels/DunraPanelItem.h"
#include "panels/OrvanPanelItem.h"
#include "panels/ReflectionItem.h"
#include "stage/DemoPillItem.h"
#include "stage/DragStripItem.h"
#include "stage/FooterItem.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTextLayout>
#include <QLineEdit>
#include <QMessageBox>

using namespace orvan;
using namespace orvan::test;
using namespace std::chrono_literals;

namespace {

template <typename Item>
Item* findItem(QGraphicsScene& scene, std::function<bool(Item*)> accept = nullptr)
{
    for (QGraphicsItem* item : scene.items(Qt::AscendingOrder)) {
        if (auto* found = dynamic_cast<Item*>(item); found && (!accept || accept(found)))
            return found;
    }
    return nullptr;
}

OrvanPanelItem* orvanPanel(StageRig& rig)
{
    // The live panel is the one in the stage; its reflection's copy lives in a private scene.
    return findItem<OrvanPanelItem>(rig.shell->stage());
}

std::vector<int> gainsSentOnChannel1(const StageRig& rig)
{
    std::vector<int> values;
    for (const auto& m : rig.sentTo("Orvan")) {
        if (m.controller() == 9)
            values.push_back(m.value());
    }
    return values;
}

void clickButton(QMessageBox* box, const QString& text)
{
    ASSERT_NE(box, nullptr);
    for (QAbstractButton* button : box->buttons()) {
        if (button->text() == text) {
            button->click();
            QApplication::processEvents();
            return;
        }
    }
    FAIL() << "no button " << text.toStdString();
}

/// Whether `words` stand on one line of the label as it is laid out at its present width.
bool onOneLine(const QLabel* label, const QString& words)
{
    QTextLayout layout(label->text(), label->font());
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine())
        line.setLineWidth(label->contentsRect().width());
    layout.endLayout();
    const int at = label->text().indexOf(words);
    return at >= 0
        && layout.lineForTextPosition(at).lineNumber() == layout.lineForTextPosition(at + int(words.size()) - 1).lineNumber();
}

} // namespace

class Stage : public ::testing::Test {};

TEST_F(Stage, TheWindowIsTheFixedSizeUndecoratedStageTitledOrvanRCU)
{
    StageRig rig;
    EXPECT_EQ(rig.window().windowTitle(), "Orvan RCU");
    EXPECT_TRUE(rig.window().windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(rig.window().minimumSize(), QSize(1298, 468));
    EXPECT_EQ(rig.window().maximumSize(), QSize(1298, 468));
    EXPECT_EQ(rig.shell->stage().sceneRect(), QRectF(0, 0, 1622, 585));
    EXPECT_DOUBLE_EQ(rig.window().transform().m11(), 0.8);
    EXPECT_TRUE(rig.window().hasFocus()) << "arrow keys work without a click";
}

TEST_F(Stage, AWheelNotchIsOneStepHoweverFinelyTheWheelSplitsIt)
{
    StageRig rig({"Orvan"});
    rig.report("Orvan", 9, 12);
    rig.orvan().toggleSelect(0);
    const QPointF knob = StageRig::at(orvanPanel(rig)->knob());

    struct Turn {
        int eighths; // per event
        int events;
        std::vector<int> gains; // all gain sends so far
    };
    const Turn turns[] = {
        {15, 8, {13}},               // one notch as libinput reports it for many mice
        {30, 4, {13, 14}},
        {60, 2, {13, 14, 15}},
        {120, 1, {13, 14, 15, 16}},  // a classic wheel
        {-15, 8, {13, 14, 15, 16, 15}},
        {240, 1, {13, 14, 15, 16, 15, 17}}, // two notches in one event: two steps
    };
    for (const Turn& turn : turns) {
        for (int i = 0; i < turn.events; ++i)
            rig.wheelAngle(knob, turn.eighths);
        EXPECT_EQ(gainsSentOnChannel1(rig), turn.gains) << turn.events << " x " << turn.eighths;
    }
}

TEST_F(Stage, TrackpadPixelsAccumulateNinePointsPerStep)
{
    StageRig rig({"Orvan"});
    rig.report("Orvan", 9, 12);
    rig.orvan().toggleSelect(0);
    const QPointF knob = StageRig::at(orvanPanel(rig)->knob());

    for (int i = 0; i < 3; ++i)
        rig.wheelPixels(knob, 4);

    EXPECT_EQ(gainsSentOnChannel1(rig), std::vector<int>{13});
}

TEST_F(Stage, ScrollGoesToTheControlUnderThePointerAndNowhereElse)
{
    StageRig rig({"Orvan"});
    rig.report("Orvan", 9, 12);
    rig.report("Orvan", 25, 12);
    rig.orvan().toggleSelect(0);
    OrvanPanelItem* panel = orvanPanel(rig);
    const QPointF readout2 = StageRig::at(panel->columns()[1]->readout());

    rig.wheelLines(StageRig::at(panel->knob()), 1); // the knob: the selection (channel 1)
    rig.wheelLines(readout2, 1);                     // channel 2's readout: channel 2 only
    rig.wheelLines(QPointF(800, 20), 1);             // the drag strip holds no scroll control

    const auto sent = rig.sentTo("Orvan");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].controller(), 9);
    EXPECT_EQ(sent[1].controller(), 25);
}

TEST_F(Stage, DraggingTheKnobDeliversWholeStepsOfEightPoints)
{
    StageRig rig({"Orvan"});
    rig.report("Orvan", 9, 12);
    rig.orvan().toggleSelect(0);
    const QPointF knob = StageRig::at(orvanPanel(rig)->knob());
    const QPoint start = rig.toViewport(knob).toPoint();
    const auto stagePointAt = [&](int viewportDy) { return rig.window().mapToScene(start + QPoint(0, viewportDy)); };

    // The window shows the stage at 0.8: one pixel is 1.25 stage points.
    struct Move {
        int viewportDy;
        std::vector<int> gains; // all gain sends so far
    };
    const Move moves[] = {
        {-6, {}},           // 7.5 points up: not yet a step
        {-7, {13}},         // 8.75: one step up
        {-16, {13, 14}},    // 20: two steps
        {-8, {13, 14, 13}}, // back to 10: one step down
    };
    rig.hover(stagePointAt(0));
    rig.press(stagePointAt(0));
    for (const Move& move : moves) {
        rig.moveHeld(stagePointAt(move.viewportDy));
        EXPECT_EQ(gainsSentOnChannel1(rig), move.gains) << "at " << move.viewportDy << " px";
    }
    rig.release(stagePointAt(-14)); // let go 17.5 points up without a move there
    EXPECT_EQ(gainsSentOnChannel1(rig).size(), 3u) << "releasing delivers nothing";
}

TEST_F(Stage, APressAndAReleaseApartWithNoMoveBetweenStepNothingAndStayAClick)
{
    StageRig rig({"Dunra"});
    rig.report("Dunra", 9, 12);
    rig.dunra().toggleSelect(0);
    const QPointF knob = StageRig::at(findItem<DunraPanelItem>(rig.shell->stage())->knob());

    rig.hover(knob);
    rig.press(knob);
    rig.release(knob + QPointF(0, -20));

    EXPECT_TRUE(rig.sentTo("Dunra").empty()) << "no gain step";
    EXPECT_EQ(rig.dunra().selected(), QList<int>{1}) << "the knob's click cycles the selection";
}

TEST_F(Stage, ArrowKeysStepTheOrvanSelectionFirstThenTheDunraThenTheMelko)
{
    StageRig rig({}, /*demo*/ true);
    // Demo selects Orvan channels 4 and 5 and Dunra channel 1.
    const auto orvanGain = [&](int ch) { return rig.orvan().midi().channels()[ch].gainValue; };
    const auto dunraGain = [&] { return rig.dunra().midi().channels()[0].gainValue; };
    const auto melkoGain = [&] { return rig.melko().midi().channels()[0].gainValue; };

    rig.key(Qt::Key_Up);
    EXPECT_EQ(orvanGain(3), 16);
    EXPECT_EQ(orvanGain(4), 13);
    EXPECT_EQ(dunraGain(), 9);

    rig.orvan().selectAllOrClear(); // clears
    rig.key(Qt::Key_Down);
    EXPECT_EQ(dunraGain(), 8);

    rig.dunra().selectAllOrClear();
    rig.key(Qt::Key_Up);
    EXPECT_EQ(melkoGain(), 15) << "demo state lets the Melko's gain move locally";
    EXPECT_TRUE(rig.midi->sent().empty());
}

TEST_F(Stage, TheDemoPillTogglesEveryEngineAndHidesWhenAUnitIsPresent)
{
    StageRig rig;
    DemoPillItem* pill = rig.shell->stage().demoPill();
    ASSERT_TRUE(pill->isVisible());
    EXPECT_EQ(pill->toolTip(), "Try the app with sample settings. Nothing is sent to any unit.");

    rig.click(StageRig::at(pill));
    EXPECT_TRUE(DemoMode::shared().active());
    for (RCUModel* m : {&rig.orvan(), &rig.dunra(), &rig.melko()})
        EXPECT_TRUE(m->midi().isConnected());
    EXPECT_EQ(pill->toolTip(), "Leave demo mode");

    rig.click(StageRig::at(pill));
    for (RCUModel* m : {&rig.orvan(), &rig.dunra(), &rig.melko()})
        EXPECT_FALSE(m->midi().isConnected());

    rig.click(StageRig::at(pill));
    rig.midi->addDevice("Melko");
    QApplication::processEvents();
    EXPECT_FALSE(pill->isVisible());
    EXPECT_FALSE(DemoMode::shared().active());
}

TEST_F(Stage, TheTopStripIsTheOnlyPlaceThatMovesTheWindow)
{
    StageRig rig;
    auto& stage = rig.shell->stage();
    EXPECT_NE(dynamic_cast<DragStripItem*>(stage.itemAt(QPointF(700, 10), QTransform())), nullptr);
    EXPECT_EQ(dynamic_cast<DragStripItem*>(stage.itemAt(QPointF(700, 30), QTransform())), nullptr);
}

TEST_F(Stage, TheFooterShowsTheNameAndVersion)
{
    StageRig rig;
    auto* footer = findItem<FooterItem>(rig.shell->stage(), [](FooterItem* f) { return f->text().startsWith("Orvan"); });
    ASSERT_NE(footer, nullptr);
    EXPECT_EQ(footer->text(), "Orvan RCU " + appVersion());
}

TEST_F(Stage, AReflectionTakesNoClicksAndRedrawsOnlyWhatItShowsOfItsPanel)
{
    StageRig rig({}, true);
    auto* reflection = findItem<ReflectionItem>(rig.shell->stage(), [](ReflectionItem* r) {
        return dynamic_cast<OrvanPanelItem*>(r->copy()) != nullptr;
    });
    ASSERT_NE(reflection, nullptr);
    EXPECT_EQ(reflection->acceptedMouseButtons(), Qt::NoButton);

    QImage frame(rig.window().size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&frame);
    rig.window().render(&painter);
    const int before = reflection->renderCount();

    rig.orvan().midi().setGain(0, 20); // the readouts sit high on the plate, out of the mirror
    rig.window().render(&painter);
    EXPECT_EQ(reflection->renderCount(), before);

    rig.orvan().midi().set(OrvanSwitch::mute, 0, true); // the mute lamps sit low: mirrored
    rig.window().render(&painter);
    rig.window().render(&painter);
    EXPECT_EQ(reflection->renderCount(), before + 1);
}

// --- The Orvan's dialogs ---------------------------------------------------------------------

TEST_F(Stage, ThePowerButtonAsksBeforeResettingAndResetsOnlyWhenConfirmed)
{
    StageRig rig({"Orvan"});
    rig.orvan().powerPressed();
    QMessageBox* box = rig.shell->orvanDialogs().resetDialog();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Reset all channels?");
    EXPECT_EQ(box->informativeText(),
              "Sets every channel to 18 dB and turns +48V, pad, polarity and mute off. Mute off means the channels will "
              "pass signal.");
    EXPECT_TRUE(rig.sentTo("Orvan").empty());

    clickButton(box, "Reset all");
    rig.clock.runUntilIdle();
    EXPECT_FALSE(rig.orvan().pendingReset());
    EXPECT_EQ(rig.sentTo("Orvan").size(), 8u * 5u) << "phantom, gain, pad, polarity, mute for 8 channels";
}

TEST_F(Stage, TheResetDialogsAreWideEnoughToKeep18dBOnOneLine)
{
    StageRig rig({"Orvan", "Dunra"});
    rig.orvan().powerPressed();
    rig.dunra().powerPressed();
    for (QMessageBox* box : {rig.shell->orvanDialogs().resetDialog(), rig.shell->dunraDialogs().resetDialog()}) {
        ASSERT_NE(box, nullptr);
        QApplication::processEvents();
        const auto* message = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
        ASSERT_NE(message, nullptr);
        EXPECT_TRUE(onOneLine(message, QStringLiteral("18 dB"))) << message->width() << " px wide";
    }
}

TEST_F(Stage, CancellingTheResetSendsNothingAndClearsTheRequest)
{
    StageRig rig({"Orvan"});
    rig.orvan().powerPressed();
    clickButton(rig.shell->orvanDialogs().resetDialog(), "Cancel");
    rig.clock.runUntilIdle();
    EXPECT_FALSE(rig.orvan().pendingReset());
    EXPECT_TRUE(rig.sentTo("Orvan").empty());
}

TEST_F(Stage, ThePhantomDialogNamesTheChannelsAndSwitchesOnlyWhenConfirmed)
{
    StageRig rig({"Orvan"});
    rig.orvan().apply(OrvanSwitch::phantom, {2, 5});
    QMessageBox* box = rig.shell->orvanDialogs().phantomDialog();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Turn on +48V phantom power?");
    EXPECT_EQ(box->informativeText(),
              "Make sure no ribbon mic or unbalanced source is connected to channel(s) 3, 6.");
    EXPECT_TRUE(rig.sentTo("Orvan").empty());

    clickButton(box, "Turn on +48V");
    const auto sent = rig.sentTo("Orvan");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].controller(), 36);
    EXPECT_EQ(sent[1].controller(), 84);
    EXPECT_EQ(sent[1].value(), 127);
    EXPECT_FALSE(rig.orvan().pendingPhantom());
}

TEST_F(Stage, CancellingThePhantomDialogSendsNothing)
{
    StageRig rig({"Orvan"});
    rig.orvan().apply(OrvanSwitch::phantom, {0});
    clickButton(rig.shell->orvanDialogs().phantomDialog(), "Cancel");
    EXPECT_FALSE(rig.orvan().pendingPhantom());
    EXPECT_TRUE(rig.sentTo("Orvan").empty());
}

TEST_F(Stage, TheSavePromptEditsTheDraftAndSavesUnderIt)
{
    StageRig rig({"Orvan"});
    rig.orvan().beginSave();
    auto& dialogs = rig.shell->orvanDialogs();
    ASSERT_NE(dialogs.saveDialog(), nullptr);
    EXPECT_EQ(dialogs.saveDialog()->windowTitle(), "Save preset");
    QLineEdit* name = dialogs.saveNameField();
    EXPECT_EQ(name->placeholderText(), "Name");
    EXPECT_EQ(name->text(), "Preset 1");

    name->selectAll();
    for (QChar c : QStringLiteral("Vocals")) {
        QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QApplication::sendEvent(name, &key);
    }
    EXPECT_EQ(rig.orvan().presetNameDraft(), "Vocals");

    dialogs.saveDialog()->accept();
    QApplication::processEvents();
    ASSERT_EQ(rig.orvan().presets().size(), 1);
    EXPECT_EQ(rig.orvan().presets()[0].name, "Vocals");
    EXPECT_FALSE(rig.orvan().savingPreset());
}

TEST_F(Stage, ARecallConfirmedAfterItsPresetWasWithdrawnDoesNothing)
{
    StageRig rig({}, true);
    // A preset with +48V on channel 1, whose +48V is off now.
    rig.orvan().midi().set(OrvanSwitch::phantom, 0, true);
    rig.orvan().beginSave();
    rig.orvan().commitSave();
    rig.orvan().setSavingPreset(false);
    rig.orvan().midi().set(OrvanSwitch::phantom, 0, false);

    rig.orvan().requestRecall();
    QMessageBox* box = rig.shell->orvanDialogs().recallDialog();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Recall preset Preset 1?");
    EXPECT_EQ(box->informativeText(), "This preset turns on +48V phantom power. Make sure no ribbon mic or unbalanced "
                                      "source is connected to those channels.");

    rig.orvan().clearPendingRecall();
    QApplication::processEvents();
    EXPECT_EQ(rig.shell->orvanDialogs().recallDialog(), nullptr) << "the dialog closes with its request";
    rig.clock.runUntilIdle();
    EXPECT_FALSE(rig.orvan().midi().channels()[0].phantom);
}
