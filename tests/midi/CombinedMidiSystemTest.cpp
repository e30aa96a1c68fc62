// The application's view of several MIDI systems at once, run with in-process systems.
#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "midi/CombinedMidiSystem.h"
#include "midi/virtual/VirtualMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

using namespace orvan;

namespace {

/// Passes everything to an in-process system and counts the detaches that reach it.
class DetachCounter final : public MidiSystem {
public:
    VirtualMidiSystem inner;
    int detaches = 0;

    MidiClientRef createClient(const QString& n, NotifyCallback c) override { return inner.createClient(n, std::move(c)); }
    MidiPortRef createInputPort(MidiClientRef c, const QString& n, ReceiveCallback r) override { return inner.createInputPort(c, n, std::move(r)); }
    MidiPortRef createOutputPort(MidiClientRef c, const QString& n) override { return inner.createOutputPort(c, n); }
    void refresh() override { inner.refresh(); }
    int sourceCount() const override { return inner.sourceCount(); }
    MidiEndpointRef source(int i) const override { return inner.source(i); }
    int destinationCount() const override { return inner.destinationCount(); }
    MidiEndpointRef destination(int i) const override { return inner.destination(i); }
    std::optional<QString> displayName(MidiEndpointRef e) const override { return inner.displayName(e); }
    void connectSource(MidiPortRef p, MidiEndpointRef s) override { inner.connectSource(p, s); }
    void disconnectSource(MidiPortRef p, MidiEndpointRef s) override { ++detaches; inner.disconnectSource(p, s); }
    void send(MidiPortRef p, MidiEndpointRef d, quint32 w) override { inner.send(p, d, w); }
};

class CombinedMidiSystemTest : public testing::Test {
protected:
    void SetUp() override { DemoMode::shared().setActive(false); }

    /// Two in-process systems combined; the first stands where ALSA stands in the app.
    struct Systems {
        DetachCounter* first = new DetachCounter; // owned by `combined`
        DetachCounter* second = new DetachCounter;
        std::unique_ptr<CombinedMidiSystem> combined = [this] {
            std::vector<std::unique_ptr<MidiSystem>> systems;
            systems.emplace_back(first);
            systems.emplace_back(second);
            return std::make_unique<CombinedMidiSystem>(std::move(systems));
        }();
    };

    ManualClock clock;
};

TEST_F(CombinedMidiSystemTest, TheFirstSystemThatHasTheUnitDrivesItHearsItAndListsItsEndpointsFirst)
{
    for (const bool onBoth : {false, true}) {
        SCOPED_TRACE(onBoth ? "on both systems" : "on the second system only");
        // an Orvan on the second system and perhaps, beside another device, on the first
        Systems s;
        const auto onSecond = s.second->inner.addDevice(QStringLiteral("Orvan"));
        if (onBoth)
            s.first->inner.addDevice(QStringLiteral("Orvan 2"));
        const auto onFirst = onBoth ? s.first->inner.addDevice(QStringLiteral("Orvan")) : VirtualMidiSystem::Device{};
        OrvanMIDI engine(Catalogue::orvan(), *s.combined, clock);
        ASSERT_TRUE(engine.isConnected());
        VirtualMidiSystem& driving = onBoth ? s.first->inner : s.second->inner;
        VirtualMidiSystem& idle = onBoth ? s.second->inner : s.first->inner;

        driving.injectControlChange((onBoth ? onFirst : onSecond).source, 36, 127); // +48V on channel 3
        QCoreApplication::sendPostedEvents();
        engine.set(OrvanSwitch::mute, 0, true);
        // that unit alone is heard and driven; a client on both systems, the first one's endpoints first
        EXPECT_TRUE(engine.channels()[2].phantom);
        ASSERT_EQ(driving.sent().size(), 1u);
        EXPECT_EQ(driving.sent()[0].word, 0x20B0077Fu);
        EXPECT_TRUE(idle.sent().empty());
        EXPECT_EQ(idle.clientNames(), QStringList{"OrvanRCU-Orvan"});
        QStringList names;
        for (int i = 0, count = s.combined->sourceCount(); i < count; ++i)
            names << s.combined->displayName(s.combined->source(i)).value_or(QStringLiteral("?"));
        EXPECT_EQ(names, onBoth ? (QStringList{"Orvan 2", "Orvan", "Orvan"}) : QStringList{"Orvan"});
    }
}

TEST_F(CombinedMidiSystemTest, ARescanDetachesOnlyAUnitThatIsNoLongerFound)
{
    Systems s;
    const auto unit = s.second->inner.addDevice(QStringLiteral("Orvan"));
    OrvanMIDI engine(Catalogue::orvan(), *s.combined, clock);
    ASSERT_TRUE(engine.hardwarePresent());

    // another device comes: the Orvan's source is never detached, so nothing it sent is lost
    s.first->inner.addDevice(QStringLiteral("Keyboard"));
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(s.second->detaches, 0);
    EXPECT_TRUE(s.second->inner.isAttached(unit.source));

    // its source loses its name: detached after the rescan
    s.second->inner.rename(unit.source, QStringLiteral("Orvan (old)"));
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(engine.hardwarePresent());
    EXPECT_EQ(s.second->detaches, 1);
    EXPECT_FALSE(s.second->inner.isAttached(unit.source));
}

} // namespace
