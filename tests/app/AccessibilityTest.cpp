#include "AccessRig.h"

#include "ControlChange.h"

#include <QAccessibleActionInterface>

using namespace orvan;
using namespace orvan::test;
using namespace orvan::ControlChange;

namespace {

void act(QAccessibleInterface* control, const QString& action)
{
    ASSERT_NE(control, nullptr);
    ASSERT_NE(control->actionInterface(), nullptr);
    ASSERT_TRUE(control->actionInterface()->actionNames().contains(action)) << control->text(QAccessible::Name).toStdString();
    control->actionInterface()->doAction(action);
    QApplication::processEvents();
}

} // namespace

TEST(Accessibility, TheWindowShowsThePanelsAsGroupsInReadingOrderThenTheDemoPill)
{
    AccessRig rig({"Orvan"});
    QStringList names;
    for (int i = 0; i < rig.root->childCount(); ++i)
        names << rig.root->child(i)->text(QAccessible::Name);
    EXPECT_EQ(names, (QStringList{"Dunra", "Orvan", "Melko", "Demo mode"}));
    EXPECT_EQ(rig.group("Orvan")->text(QAccessible::Description), "Orvan found");
    EXPECT_EQ(rig.group("Dunra")->text(QAccessible::Description), "Dunra not found");
    // Each control knows its place, as a screen reader walking back up the tree asks. (That every
    // focusable control has a name of its own and acts is what the keyboard test and the screen
    // reader walk count.)
    for (const auto& [name, count] : {std::pair{"Orvan", 70}, {"Dunra", 25}, {"Melko", 13}}) {
        QAccessibleInterface* group = rig.group(name);
        EXPECT_EQ(group->childCount(), count);
        for (int i = 0; i < group->childCount(); ++i)
            EXPECT_TRUE(group->child(i)->parent() == group && group->indexOfChild(group->child(i)) == i) << name << " " << i;
    }
}

TEST(Accessibility, EveryControlIsFoundByNameWithItsRoleAndTooltip)
{
    AccessRig rig({"Orvan"});
    struct Row {
        const char* group;
        const char* name;
        QAccessible::Role role;
        const char* description;
    };
    const Row rows[] = {
        {"Orvan", "Power", QAccessible::PushButton, "Reset all channels: 18 dB, +48V, pad, polarity and mute off"},
        {"Orvan", "Channel 1 polarity", QAccessible::CheckBox, "Toggle POL \u00D8 on channel 1"},
        {"Orvan", "Channel 3 gain", QAccessible::Slider, "Drag up or down, or scroll, to change channel 3 gain"},
        {"Orvan", "Select channel 5", QAccessible::PushButton, "Select channel 5"},
        {"Orvan", "Pad on selected channels", QAccessible::PushButton, "Applies to the selected channels"},
        {"Orvan", "Recall preset", QAccessible::PushButton, ""},
        {"Orvan", "Gain knob", QAccessible::Dial, ""},
        {"Dunra", "Power", QAccessible::PushButton, "Dunra not found. Click to look again."},
        {"Dunra", "Channel 2 DI", QAccessible::CheckBox, "Toggle DI on channel 2"},
        {"Dunra", "Channel 1 gain", QAccessible::Slider, "Click to select channel 1. Drag or scroll to change its gain."},
        {"Dunra", "Select all or clear", QAccessible::PushButton, ""},
        {"Melko", "Gain", QAccessible::Slider, "Drag or scroll to change gain"},
        {"Melko", "48V", QAccessible::CheckBox, "Toggle 48V"},
        {"Melko", "Gain knob", QAccessible::Dial, "Turn or scroll to change gain"},
        {"", "Demo mode", QAccessible::PushButton, "Try the app with sample settings. Nothing is sent to any unit."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.group) + "/" + row.name);
        QAccessibleInterface* control = rig.control(row.group, row.name);
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(control->role(), row.role);
        EXPECT_EQ(control->text(QAccessible::Description), QString::fromUtf8(row.description));
        EXPECT_TRUE(control->state().focusable);
        EXPECT_TRUE(rig.root->rect().contains(control->rect())) << "on screen, inside the window";
    }
}

// A lamp read under one name and wired to another switch would have a blind user turn on what
// they did not hear: every lamp of every channel is checked by, and toggles, the switch it names.
TEST(Accessibility, EveryLampIsNamedAfterTheSwitchItShowsAndToggles)
{
    const struct {
        const char* unit;
        int channels;
        const char* name; ///< "%1" is the channel number
        int offset;
    } lamps[] = {
        {"Orvan", 8, "Channel %1 48V", phantomOffset},   {"Orvan", 8, "Channel %1 polarity", polarityOffset},
        {"Orvan", 8, "Channel %1 pad", padOffset},       {"Orvan", 8, "Channel %1 mute", muteOffset},
        {"Dunra", 2, "Channel %1 DI", diOffset},         {"Dunra", 2, "Channel %1 48V", phantomOffset},
        {"Dunra", 2, "Channel %1 polarity", polarityOffset}, {"Dunra", 2, "Channel %1 pad", padOffset},
        {"Dunra", 2, "Channel %1 mute", muteOffset},     {"Melko", 1, "HPF 78 Hz", hpfOffset},
        {"Melko", 1, "48V", phantomOffset},              {"Melko", 1, "Polarity", polarityOffset},
        {"Melko", 1, "Pad", padOffset},                  {"Melko", 1, "Mute", muteOffset},
    };
    AccessRig rig({"Orvan", "Dunra", "Melko"});
    for (const auto& lamp : lamps) {
        for (int ch = 0; ch < lamp.channels; ++ch) {
            const QString name = QString::fromUtf8(lamp.name).arg(ch + 1);
            SCOPED_TRACE(std::string(lamp.unit) + "/" + name.toStdString());
            QAccessibleInterface* control = rig.control(lamp.unit, name);
            ASSERT_NE(control, nullptr);
            rig.report(lamp.unit, controller(ch, lamp.offset), kSwitchOnValue);
            EXPECT_TRUE(control->state().checked);
            rig.midi->clearSent();
            act(control, QAccessibleActionInterface::toggleAction());
            const bool listenOnly = QString(lamp.unit) == "Melko"; // listened to, never driven
            EXPECT_EQ(rig.sent(lamp.unit), (listenOnly ? Sent{} : Sent{{controller(ch, lamp.offset), 0}}));
            rig.report(lamp.unit, controller(ch, lamp.offset), 0);
            EXPECT_FALSE(control->state().checked);
        }
    }
}

TEST(Accessibility, AGainControlReadsTheReportedGainWithItsRangeAndStep)
{
    AccessRig rig({"Orvan"});
    QAccessibleInterface* gain = rig.control("Orvan", "Channel 2 gain");
    EXPECT_EQ(gain->text(QAccessible::Value), "unknown");
    EXPECT_FALSE(gain->valueInterface()->currentValue().isValid());
    rig.report("Orvan", controller(1, gainOffset), 8);
    EXPECT_EQ(gain->text(QAccessible::Value), "24 dB");
    const QAccessibleValueInterface* value = gain->valueInterface();
    EXPECT_EQ((QList<int>{value->currentValue().toInt(), value->minimumValue().toInt(), value->maximumValue().toInt(),
                          value->minimumStepSize().toInt()}),
              (QList<int>{24, 18, 70, 3}));
}

TEST(Accessibility, TheSelectionShowsOnTheSelectButtonTheReadoutTheKnobAndTheStatusDisplay)
{
    AccessRig rig({"Orvan"});
    rig.report("Orvan", controller(1, gainOffset), 8);
    QAccessibleInterface* knob = rig.control("Orvan", "Gain knob");
    EXPECT_EQ(knob->text(QAccessible::Value), "no channel selected");

    act(rig.control("Orvan", "Select channel 2"), QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(rig.orvan().selected(), QList<int>{1});
    EXPECT_TRUE(rig.control("Orvan", "Select channel 2")->state().checked);
    EXPECT_TRUE(rig.control("Orvan", "Channel 2 gain")->state().selected);
    EXPECT_FALSE(rig.control("Orvan", "Channel 1 gain")->state().selected);
    EXPECT_EQ(knob->text(QAccessible::Value), "24 dB");
    QAccessibleInterface* status = rig.control("Orvan", "Orvan USB: Linked, Ch 2 24dB");
    ASSERT_NE(status, nullptr) << "the status display reads as its two lines";
    EXPECT_EQ(status->role(), QAccessible::StaticText);
    EXPECT_EQ(status->text(QAccessible::Description), "Orvan status display");
}

TEST(Accessibility, ActionsSendWhatAClickSends)
{
    AccessRig rig({"Orvan"});
    rig.report("Orvan", controller(0, gainOffset), 8);
    act(rig.control("Orvan", "Channel 1 pad"), QAccessibleActionInterface::toggleAction());
    act(rig.control("Orvan", "Channel 1 gain"), QAccessibleActionInterface::increaseAction());
    rig.control("Orvan", "Channel 1 gain")->valueInterface()->setCurrentValue(33);
    EXPECT_EQ(rig.sent("Orvan"), (Sent{{controller(0, padOffset), kSwitchOnValue},
                                       {controller(0, gainOffset), 9},
                                       {controller(0, gainOffset), 11}}));
}

TEST(Accessibility, PhantomPowerAndResetAskBeforeAnythingIsSent)
{
    AccessRig rig({"Orvan"});
    act(rig.control("Orvan", "Channel 4 48V"), QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(rig.orvan().pendingPhantom(), QList<int>{3}) << "+48V asks first";
    act(rig.control("Orvan", "Power"), QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(rig.orvan().pendingReset()) << "POWER asks before resetting";
    EXPECT_TRUE(rig.sent("Orvan").empty());
}
