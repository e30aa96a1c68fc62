#include "AccessRig.h"

#include "ControlChange.h"
#include "DemoMode.h"
#include "items/LampRowItem.h"
#include "panels/ChannelColumn.h"
#include "panels/OrvanPanelItem.h"

#include <QTest>

using namespace orvan;
using namespace orvan::test;
using namespace orvan::ControlChange;

// Qt hands accessibility events on only while an assistive technology is active, and only
// platforms with an accessibility bridge can be active: this test runs on X (a private Xvfb
// server, see CMakeLists.txt), not on the offscreen platform.

namespace {

/// Records the accessibility events the application raises, as a screen reader would hear them.
struct EventLog {
    struct Entry {
        QAccessibleInterface* target;
        QAccessible::Event type;
        bool checkedChanged;
    };
    static inline std::vector<Entry> entries;

    EventLog() : previous(QAccessible::installUpdateHandler(&EventLog::record)) { entries.clear(); }
    ~EventLog() { QAccessible::installUpdateHandler(previous); }
    static void record(QAccessibleEvent* event)
    {
        const bool checked = event->type() == QAccessible::StateChanged
            && static_cast<QAccessibleStateChangeEvent*>(event)->changedStates().checked;
        entries.push_back({event->accessibleInterface(), event->type(), checked});
    }
    bool has(QAccessibleInterface* target, QAccessible::Event type) const
    {
        return std::ranges::any_of(entries, [&](const Entry& e) { return e.target == target && e.type == type; });
    }
    QAccessible::UpdateHandler previous;
};

class AccessibilityEvents : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Waits for Qt's AT-SPI bridge to reach the accessibility bus and turn itself on.
        if (!QTest::qWaitFor([] { return QAccessible::isActive(); }, 20000))
            GTEST_SKIP() << "no active accessibility bridge: run under X with a session bus (see CMakeLists.txt)";
    }
    /// Lets queued work (the engine's reports, the announcements after them) run to the end.
    static void settle()
    {
        for (int i = 0; i < 3; ++i)
            QApplication::processEvents();
    }
};

} // namespace

TEST_F(AccessibilityEvents, ALampOrAGainReportedByTheUnitIsAnnouncedAndNothingElse)
{
    AccessRig rig({"Orvan"});
    QAccessibleInterface* lamp = rig.control("Orvan", "Channel 5 mute");
    EventLog log;
    rig.report("Orvan", controller(4, muteOffset), kSwitchOnValue);
    rig.report("Orvan", controller(4, gainOffset), 12);
    settle();
    EXPECT_TRUE(std::ranges::any_of(log.entries, [&](const EventLog::Entry& e) { return e.target == lamp && e.checkedChanged; }));
    EXPECT_TRUE(log.has(rig.control("Orvan", "Channel 5 gain"), QAccessible::ValueChanged));
    EXPECT_FALSE(log.has(rig.control("Orvan", "Channel 6 mute"), QAccessible::StateChanged));
    EXPECT_FALSE(log.has(rig.control("Orvan", "Channel 4 gain"), QAccessible::ValueChanged));

    // an undo by key is announced like the click it takes back
    rig.click(at(rig.stage().orvanPanel()->columns()[5]->rows()[4]));
    settle();
    EventLog::entries.clear();
    rig.press(Qt::Key_Z, Qt::ControlModifier);
    settle();
    QAccessibleInterface* undone = rig.control("Orvan", "Channel 6 mute");
    EXPECT_TRUE(std::ranges::any_of(log.entries, [&](const EventLog::Entry& e) { return e.target == undone && e.checkedChanged; }));
}

// A panel's and its POWER button's descriptions change with the unit's presence whether it comes,
// goes or demo mode stands in for it: demo mode is the one scenario here.
TEST_F(AccessibilityEvents, DemoModeTheSelectionAndTheKeyboardFocusAreAnnounced)
{
    AccessRig rig;
    QAccessibleInterface* status = rig.control("Orvan", "Orvan: not found, Select channel(s)");
    ASSERT_NE(status, nullptr);
    EventLog log;
    DemoMode::shared().setActive(true);
    settle();
    EXPECT_TRUE(log.has(rig.control("", "Demo mode"), QAccessible::StateChanged));
    EXPECT_EQ(rig.group("Dunra")->text(QAccessible::Description), "Dunra not found: showing demo settings");
    EXPECT_TRUE(log.has(rig.group("Dunra"), QAccessible::DescriptionChanged));
    EXPECT_TRUE(log.has(rig.control("Dunra", "Power"), QAccessible::DescriptionChanged));

    rig.orvan().toggleSelect(1);
    settle();
    EXPECT_TRUE(log.has(status, QAccessible::NameChanged)) << "the status lines follow the selection";
    EXPECT_TRUE(log.has(rig.control("Orvan", "Select channel 2"), QAccessible::StateChanged));

    QAccessibleInterface* pad = rig.control("Orvan", "Channel 2 pad");
    pad->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(log.has(pad, QAccessible::Focus));
    EXPECT_TRUE(pad->state().focused);
}
