// The engines over a real JACK server (dummy driver, private name) against orvan-unit-sim.
#include "Catalogue.h"
#include "DemoMode.h"
#include "JackTestServer.h"
#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "midi/LinuxMidiSystem.h"
#include "midi/jack/JackMidiSystem.h"
#include "time/ManualClock.h"
#include "time/SystemClock.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace orvan;
using namespace orvan::test;

namespace {

const QString kSimulator = QStringLiteral(ORVAN_UNIT_SIM_PATH);
// jack_midi_dump prints through stdio: line-buffer it, or nothing shows until it exits.
const QString kLineBuffered = QStringLiteral("stdbuf");
const QString kOurOut = QStringLiteral("OrvanRCU-Orvan:Out");

JackChild simulator(const QString& displayName, QStringList extra = {})
{
    return JackChild(kSimulator, QStringList{QStringLiteral("--unit"), QStringLiteral("orvan"), QStringLiteral("--name"),
                                             displayName} + extra);
}

bool isReady(const JackChild& child)
{
    return child.lines().value(0).startsWith(QLatin1String("ready"));
}

/// The messages in lines like "1234 b0 09 0a" (the simulator) or "   0: b0 09 0a control change ..."
/// (jack_midi_dump), as "b0 09 0a".
QStringList messagesIn(const QStringList& lines)
{
    static const QRegularExpression message(QStringLiteral("^\\s*\\d+:?((?: [0-9a-f]{2})+)"));
    QStringList result;
    for (const QString& line : lines) {
        const auto match = message.match(line);
        if (match.hasMatch())
            result << match.captured(1).trimmed();
    }
    return result;
}

/// Whether a source and a destination of that display name are both listed.
bool listsBothWays(const MidiSystem& system, const QString& name)
{
    QStringList sources, destinations;
    for (int i = 0, n = system.sourceCount(); i < n; ++i)
        sources << system.displayName(system.source(i)).value_or(QString());
    for (int i = 0, n = system.destinationCount(); i < n; ++i)
        destinations << system.displayName(system.destination(i)).value_or(QString());
    return sources.contains(name) && destinations.contains(name);
}

class JackIntegrationTest : public testing::Test {
protected:
    // A fresh server for every test: one test's unit killed mid-cycle on a loaded machine must
    // not leave the next test a server in trouble.
    void SetUp() override
    {
        server = std::make_unique<JackTestServer>(QStringLiteral("main"));
        ASSERT_TRUE(server->start()) << "jackd with the dummy driver did not start";
        DemoMode::shared().setActive(false);
    }
    void TearDown() override { server.reset(); }

    std::unique_ptr<JackTestServer> server;
    ManualClock clock;
};

TEST_F(JackIntegrationTest, AUnitIsFoundByItsExactDisplayNameOnly)
{
    struct Row {
        QString name;
        bool taken;
    };
    for (const Row& row : {Row{"Orvan 2", false}, Row{"orvan", false}, Row{"Orvan", true}}) {
        SCOPED_TRACE(row.name.toStdString());
        // given a unit under that name, visible on the server
        JackMidiSystem system;
        OrvanMIDI engine(Catalogue::orvan(), system, clock);
        JackChild unit = simulator(row.name);
        ASSERT_TRUE(unit.start());
        ASSERT_TRUE(waitUntil([&] { return listsBothWays(system, row.name); }));

        // when the engine looks
        engine.connect();

        // then
        EXPECT_EQ(engine.hardwarePresent(), row.taken);
        unit.stop();
    }
}

TEST_F(JackIntegrationTest, AUnitPluggedInAndOutIsFollowedWithOneChangeEach)
{
    // given the engine running with no unit
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    std::vector<bool> changes;
    QObject::connect(&engine, &OrvanMIDI::isConnectedChanged, [&](bool c) { changes.push_back(c); });
    ASSERT_FALSE(engine.isConnected());

    // when the unit appears, then it is taken without any call from us
    JackChild unit = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(unit.start());
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));
    engine.set(OrvanSwitch::pad, 3, true);
    ASSERT_TRUE(waitUntil([&] { return messagesIn(unit.lines()).contains(QStringLiteral("b0 32 7f")); }));

    // when it goes away, then the engine lets go and forgets the channel state
    unit.stop();
    ASSERT_TRUE(waitUntil([&] { return !engine.isConnected(); }));
    EXPECT_EQ(changes, (std::vector<bool>{true, false}));
    EXPECT_EQ(engine.channels(), defaultChannels(8));
}

TEST_F(JackIntegrationTest, AKnobTurnAtTheUnitShowsToTheDecibel)
{
    // given the unit, whose knob on channel 1 turns from 27 dB to 32 dB once we listen
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    JackChild unit = simulator(QStringLiteral("Orvan"), {QStringLiteral("--turn"), QStringLiteral("0:27:32"),
                                                        QStringLiteral("--detent-ms"), QStringLiteral("10")});
    ASSERT_TRUE(unit.start());

    // when its five coarse reports (9, 9, 10, 10, 10) arrive
    const bool shown = waitUntil([&] { return shownGainDecibels(engine.channels()[0]) == 32; });

    // then every report was applied, in order
    EXPECT_TRUE(shown) << "shown: " << shownGainDecibels(engine.channels()[0]).value_or(-1);
    EXPECT_TRUE(engine.isConnected());
}

TEST_F(JackIntegrationTest, OutgoingMessagesLeaveOurOutPortAsTheProtocolsBytes)
{
    // given JACK's own MIDI monitor listening to our "Out", and the unit connected
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    JackChild dump(kLineBuffered, {QStringLiteral("-oL"), QStringLiteral("jack_midi_dump"), QStringLiteral("orvan-dump")});
    ASSERT_TRUE(dump.start());
    ASSERT_TRUE(waitUntil([&] { return server->connectPorts(kOurOut, QStringLiteral("orvan-dump:input")); }));
    JackChild unit = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(unit.start());
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));

    // when the user sets gain 10 on channel 1, mutes channel 8 and takes the pad off channel 3
    engine.setGain(0, 10);
    engine.set(OrvanSwitch::mute, 7, true);
    engine.set(OrvanSwitch::pad, 2, false);

    // then each is one Control Change on MIDI channel 1, in order, at the monitor and at the unit
    const QStringList expected{"b0 09 0a", "b0 77 7f", "b0 22 00"};
    EXPECT_TRUE(waitUntil([&] { return messagesIn(dump.lines()).size() >= 3 && messagesIn(unit.lines()).size() >= 3; }));
    EXPECT_EQ(messagesIn(dump.lines()), expected);
    EXPECT_EQ(messagesIn(unit.lines()), expected);
}

TEST_F(JackIntegrationTest, MessagesSentAsTheUnitVanishesAreDroppedNotDeliveredLater)
{
    // given a connected unit
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    {
        JackChild first = simulator(QStringLiteral("Orvan"));
        ASSERT_TRUE(first.start());
        ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));

        // when it is unplugged in the middle of a recall the engine has not yet heard about
        first.stop();
        ASSERT_TRUE(engine.isConnected());
        for (int channel = 0; channel < 8; ++channel)
            engine.set(OrvanSwitch::phantom, channel, true);
    }
    ASSERT_TRUE(waitUntil([&] { return !engine.isConnected(); }));

    // and a unit is plugged in again and sent one message
    JackChild second = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(second.start());
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));
    engine.setGain(1, 7);

    // then the new unit gets that message and none of the stale +48V ones
    ASSERT_TRUE(waitUntil([&] { return !messagesIn(second.lines()).isEmpty(); }));
    EXPECT_EQ(messagesIn(second.lines()), QStringList{"b0 19 07"});
}

TEST_F(JackIntegrationTest, AResetReachesTheUnitPacedTwelveMillisecondsApartWithTheLongPauseAfterPhantom)
{
    // given the model over a connected unit, paced by real timers
    JackMidiSystem system;
    SystemClock& time = SystemClock::shared();
    OrvanMIDI engine(Catalogue::orvan(), system, time);
    RCUModel model(engine, time);
    JackChild unit = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(unit.start());
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));

    // when the whole unit is reset: 8 x +48V, a pause, 8 x (gain, pad, polarity), 8 x mute
    model.resetAll();
    constexpr int kMessages = 8 + 3 * 8 + 8;
    ASSERT_TRUE(waitUntil([&] { return messagesIn(unit.lines()).size() >= kMessages; }, 10000));

    // then the unit received them in that order, spaced as paced, measured in JACK frames
    static const QRegularExpression line(QStringLiteral("^(\\d+) b0 ([0-9a-f]{2}) ([0-9a-f]{2})$"));
    std::vector<std::pair<qint64, int>> received; // frame, controller
    for (const QString& l : unit.lines()) {
        if (const auto m = line.match(l); m.hasMatch())
            received.emplace_back(m.captured(1).toLongLong(), m.captured(2).toInt(nullptr, 16));
    }
    ASSERT_EQ(received.size(), std::size_t(kMessages));
    for (int ch = 0; ch < 8; ++ch) {
        EXPECT_EQ(received[std::size_t(ch)].second, 16 * ch + 4) << "+48V first";
        EXPECT_EQ(received[std::size_t(8 + 3 * ch)].second, 16 * ch + 9) << "then gain";
        EXPECT_EQ(received[std::size_t(32 + ch)].second, 16 * ch + 7) << "mute last";
    }
    // Messages leave at the start of the next JACK cycle, so a gap may look one period short.
    constexpr qint64 kFramesPerMs = 48;
    const qint64 slack = server->periodFrames();
    for (std::size_t i = 1; i < received.size(); ++i) {
        const qint64 gap = received[i].first - received[i - 1].first;
        const qint64 paced = i == 8 ? (12 + 900) * kFramesPerMs : 12 * kFramesPerMs;
        EXPECT_GE(gap, paced - slack) << "between message " << i - 1 << " and " << i;
    }
}

class JackLateServerTest : public testing::Test {
protected:
    void SetUp() override { DemoMode::shared().setActive(false); }
    ManualClock clock;
};

TEST_F(JackLateServerTest, AServerStartedAfterTheAppIsFoundOnTheNextRescanAndItsEndIsFollowed)
{
    // given the engine started with no JACK server
    JackTestServer late(QStringLiteral("late"));
    late.select();
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    ASSERT_FALSE(system.isOpen());

    // when a server and the unit come up, and the user asks to look again
    ASSERT_TRUE(late.start());
    JackChild unit = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(unit.start());
    ASSERT_TRUE(waitUntil([&] { return isReady(unit); }));
    engine.connect();

    // then the unit is found at once
    EXPECT_TRUE(engine.hardwarePresent());

    // when the unit leaves and then the server stops (jackd 1.9 can die of SIGPIPE, and leave its
    // name registered for good, when a client quits while it shuts down)
    unit.stop();
    ASSERT_TRUE(waitUntil([&] { return !engine.isConnected(); }));
    late.stop();

    // then our client hears the end and lets go of the server, and looking again finds nothing
    EXPECT_TRUE(waitUntil([&] { return !system.isOpen(); }));
    engine.connect();
    EXPECT_FALSE(engine.hardwarePresent());
}

TEST(NoMidiSystem, TheEnginesStartAndRunWithNeitherAlsaNorJack)
{
    // given no JACK server under this name (and, on CI, no /dev/snd/seq)
    JackTestServer none(QStringLiteral("none"));
    none.select();
    DemoMode::shared().setActive(false);
    ManualClock clock;
    const auto system = createLinuxMidiSystem();

    // when the three engines start and the user asks to look again
    std::vector<std::unique_ptr<OrvanMIDI>> engines;
    for (const DeviceSpec& spec : Catalogue::all())
        engines.push_back(std::make_unique<OrvanMIDI>(spec, *system, clock));
    for (auto& engine : engines) {
        engine->connect();
        engine->setGain(0, 12);
    }

    // then nothing is found and nothing changes; demo mode still works
    for (auto& engine : engines) {
        EXPECT_FALSE(engine->isConnected());
        EXPECT_EQ(engine->channels(), defaultChannels(engine->spec().channelCount));
    }
    DemoMode::shared().setActive(true);
    EXPECT_TRUE(engines[0]->isConnected());
    DemoMode::shared().setActive(false);
}

} // namespace
