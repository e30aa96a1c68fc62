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
    MidiPortRef createInputPort(MidiClientRef c, const QString& n, ReceiveCallback r) override
    {
        return inner.createInputPort(c, n, std::move(r));
    }
    MidiPortRef createOutputPort(MidiClientRef c, const QString& n) override { return inner.createOutputPort(c, n); }
    int sourceCount() const override { return inner.sourceCount(); }
    MidiEndpointRef source(int i) const override { return inner.source(i); }
    int destinationCount() const override { return inner.destinationCount(); }
    MidiEndpointRef destination(int i) const override { return inner.destination(i); }
    std::optional<QString> displayName(MidiEndpointRef e) const override { return inner.displayName(e); }
    void connectSource(MidiPortRef p, MidiEndpointRef s) override { inner.connectSource(p, s); }
    void disconnectSource(MidiPortRef p, MidiEndpointRef s) override
    {
        ++detaches;
        inner.disconnectSource(p, s);
    }
    void send(MidiPortRef p, MidiEndpointRef d, quint32 w) override { inner.send(p, d, w); }
};

class CombinedMidiSystemTest : public testing::Test {
protected:
    void SetUp() override
    {
        DemoMode::shared().setActive(false);
        std::vector<std::unique_ptr<MidiSystem>> systems;
        systems.push_back(std::make_unique<DetachCounter>());
        systems.push_back(std::make_unique<DetachCounter>());
        alsa = static_cast<DetachCounter*>(systems[0].get());
        jack = static_cast<DetachCounter*>(systems[1].get());
        combined = std::make_unique<CombinedMidiSystem>(std::move(systems));
    }

    ManualClock clock;
    DetachCounter* alsa = nullptr;
    DetachCounter* jack = nullptr;
    std::unique_ptr<CombinedMidiSystem> combined;
};

TEST_F(CombinedMidiSystemTest, TheFirstSystemIsListedFirstAndDrivesAUnitSeenOnBoth)
{
    // given a Dunra on the second system and one on the first
    jack->inner.addDevice(QStringLiteral("Dunra"));
    alsa->inner.addDevice(QStringLiteral("Orvan 2"));
    alsa->inner.addDevice(QStringLiteral("Dunra"));
    OrvanMIDI engine(Catalogue::dunra(), *combined, clock);

    // when the user sets a gain
    engine.setGain(1, 8);

    // then the first system's endpoints come first, under their own names, and it alone is driven
    QStringList names;
    for (int i = 0, count = combined->sourceCount(); i < count; ++i)
        names << combined->displayName(combined->source(i)).value_or(QStringLiteral("?"));
    EXPECT_EQ(names, (QStringList{"Orvan 2", "Dunra", "Dunra"}));
    ASSERT_EQ(alsa->inner.sent().size(), 1u);
    EXPECT_EQ(alsa->inner.sent()[0].word, 0x20B01908u);
    EXPECT_TRUE(jack->inner.sent().empty());
}

TEST_F(CombinedMidiSystemTest, AUnitOnTheSecondSystemIsFoundDrivenAndHeard)
{
    // given the Orvan only on the second system, and a client on both
    const auto unit = jack->inner.addDevice(QStringLiteral("Orvan"));
    OrvanMIDI engine(Catalogue::orvan(), *combined, clock);
    ASSERT_TRUE(engine.isConnected());
    EXPECT_EQ(alsa->inner.clientNames(), QStringList{"OrvanRCU-Orvan"});
    EXPECT_EQ(jack->inner.clientNames(), QStringList{"OrvanRCU-Orvan"});

    // when it reports +48V on for the channel labelled 3 and we mute channel 1
    jack->inner.injectControlChange(unit.source, 36, 127);
    QCoreApplication::sendPostedEvents();
    engine.set(OrvanSwitch::mute, 0, true);

    // then
    EXPECT_TRUE(engine.channels()[2].phantom);
    ASSERT_EQ(jack->inner.sentTo(QStringLiteral("Orvan")).size(), 1u);
    EXPECT_EQ(jack->inner.sent()[0].word, 0x20B0077Fu);
    EXPECT_TRUE(alsa->inner.sent().empty());
}

TEST_F(CombinedMidiSystemTest, ARescanDetachesOnlyAUnitThatIsNoLongerFound)
{
    // given a connected Orvan
    const auto unit = jack->inner.addDevice(QStringLiteral("Orvan"));
    OrvanMIDI engine(Catalogue::orvan(), *combined, clock);
    ASSERT_TRUE(engine.hardwarePresent());

    // when another device comes and the engine rescans, then the Orvan's source was never
    // detached, so nothing it sent in between was lost
    alsa->inner.addDevice(QStringLiteral("Keyboard"));
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(jack->detaches, 0);
    EXPECT_TRUE(jack->inner.isAttached(unit.source));

    // when its source loses its name, then it is detached after the rescan
    jack->inner.rename(unit.source, QStringLiteral("Orvan (old)"));
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(engine.hardwarePresent());
    EXPECT_EQ(jack->detaches, 1);
    EXPECT_FALSE(jack->inner.isAttached(unit.source));
}

} // namespace
