#include "AccessTree.h"

#include "ControlChange.h"
#include "DemoMode.h"

#include <QEventLoop>
#include <QTimer>

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
        QAccessible::State changed;
    };

    EventLog()
    {
        previous = QAccessible::installUpdateHandler(&EventLog::record);
        entries().clear();
    }
    ~EventLog()
    {
        QAccessible::installUpdateHandler(previous);
        entries().clear();
    }

    static std::vector<Entry>& entries()
    {
        static std::vector<Entry> log;
        return log;
    }
    static void record(QAccessibleEvent* event)
    {
        QAccessible::State changed;
        if (event->type() == QAccessible::StateChanged)
            changed = static_cast<QAccessibleStateChangeEvent*>(event)->changedStates();
        entries().push_back({event->accessibleInterface(), event->type(), changed});
    }
    bool has(QAccessibleInterface* target, QAccessible::Event type) const
    {
        return std::any_of(entries().begin(), entries().end(),
                           [&](const Entry& e) { return e.target == target && e.type == type; });
    }

    QAccessible::UpdateHandler previous;
};

/// Waits until Qt's AT-SPI bridge has reached the accessibility bus and turned itself on.
class Activation final : public QAccessible::ActivationObserver {
public:
    Activation() { QAccessible::installActivationObserver(this); }
    ~Activation() override { QAccessible::removeActivationObserver(this); }
    void accessibilityActiveChanged(bool active) override
    {
        if (active)
            loop.quit();
    }
    bool wait()
    {
        if (QAccessible::isActive())
            return true;
        // Only a guard: the bridge answers as soon as the bus does.
        QTimer::singleShot(std::chrono::seconds(20), &loop, &QEventLoop::quit);
        loop.exec();
        return QAccessible::isActive();
    }
    QEventLoop loop;
};

class AccessibilityEvents : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!Activation().wait())
            GTEST_SKIP() << "no active accessibility bridge on the " << QGuiApplication::platformName().toStdString()
                         << " platform: run under X with a session bus (see tests/app/CMakeLists.txt)";
    }
};

/// Lets queued work (the engine's reports, the announcements after them) run to the end.
void settle()
{
    for (int i = 0; i < 3; ++i)
        QApplication::processEvents();
}

} // namespace

TEST_F(AccessibilityEvents, ALampOrAGainReportedByTheUnitIsAnnouncedAndNothingElse)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    QAccessibleInterface* lamp = tree.control("Orvan", "Channel 5 mute");
    QAccessibleInterface* gain = tree.control("Orvan", "Channel 5 gain");
    EventLog log;

    rig.report("Orvan", controller(4, muteOffset), kSwitchOnValue);
    rig.report("Orvan", controller(4, gainOffset), 12);
    settle();

    EXPECT_TRUE(std::any_of(log.entries().begin(), log.entries().end(), [&](const EventLog::Entry& e) {
        return e.target == lamp && e.type == QAccessible::StateChanged && e.changed.checked;
    }));
    EXPECT_TRUE(log.has(gain, QAccessible::ValueChanged));
    EXPECT_FALSE(log.has(tree.control("Orvan", "Channel 6 mute"), QAccessible::StateChanged));
    EXPECT_FALSE(log.has(tree.control("Orvan", "Channel 4 gain"), QAccessible::ValueChanged));
}

TEST_F(AccessibilityEvents, LosingTheUnitIsAnnouncedOnItsPanelAndItsPowerButton)
{
    StageRig rig({"Orvan"});
    AccessTree tree(rig);
    ASSERT_EQ(tree.group("Orvan")->text(QAccessible::Description), "Orvan found");
    EventLog log;

    rig.midi->removeDevice(rig.devices.at("Orvan"));
    rig.midi->notifySetupChanged();
    settle();

    EXPECT_EQ(tree.group("Orvan")->text(QAccessible::Description), "Orvan not found");
    EXPECT_TRUE(log.has(tree.group("Orvan"), QAccessible::DescriptionChanged));
    EXPECT_TRUE(log.has(tree.control("Orvan", "Power"), QAccessible::DescriptionChanged));
    EXPECT_EQ(tree.control("Orvan", "Power")->text(QAccessible::Description), "Orvan not found. Click to look again.");
    EXPECT_FALSE(log.has(tree.group("Dunra"), QAccessible::DescriptionChanged));
}

TEST_F(AccessibilityEvents, DemoModeTheSelectionAndTheKeyboardFocusAreAnnounced)
{
    StageRig rig;
    AccessTree tree(rig);
    QAccessibleInterface* status = tree.control("Orvan", rig.orvan().lcdLines().first + ", " +
                                                             rig.orvan().lcdLines().second);
    ASSERT_NE(status, nullptr);
    EventLog log;

    DemoMode::shared().setActive(true);
    settle();
    EXPECT_TRUE(log.has(tree.control("", "Demo mode"), QAccessible::StateChanged));
    EXPECT_EQ(tree.group("Dunra")->text(QAccessible::Description), "Dunra not found: showing demo settings");
    EXPECT_TRUE(log.has(tree.group("Dunra"), QAccessible::DescriptionChanged));

    rig.orvan().toggleSelect(1);
    settle();
    EXPECT_TRUE(log.has(status, QAccessible::NameChanged)) << "the status lines follow the selection";
    EXPECT_TRUE(log.has(tree.control("Orvan", "Select channel 2"), QAccessible::StateChanged));

    tree.control("Orvan", "Channel 2 pad")->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(log.has(tree.control("Orvan", "Channel 2 pad"), QAccessible::Focus));
    EXPECT_TRUE(tree.control("Orvan", "Channel 2 pad")->state().focused);
}
