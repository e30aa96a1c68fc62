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
#include <atomic>
#include <jack/midiport.h>
#include <gtest/gtest.h>

using namespace orvan;
using namespace orvan::test;

namespace {

const QString kSimulator = QStringLiteral(ORVAN_UNIT_SIM_PATH);
// jack_midi_dump prints through stdio: line-buffer it, or nothing shows until it exits.
const QString kLineBuffered = QStringLiteral("stdbuf");
const QString kOurOut = QStringLiteral("OrvanRCU-Orvan:Out");
constexpr int kUnitStartMilliseconds = 2000;

QStringList simulatorArguments(const QString& displayName, const QStringList& extra = {})
{
    return QStringList{QStringLiteral("--unit"), QStringLiteral("orvan"), QStringLiteral("--name"), displayName} + extra;
}

JackChild simulator(const QString& displayName, const QStringList& extra = {})
{
    return JackChild(kSimulator, simulatorArguments(displayName, extra));
}

/// A unit that can be unplugged (destroyed) and plugged in again (made anew).
std::unique_ptr<JackChild> pluggableSimulator()
{
    return std::make_unique<JackChild>(kSimulator, simulatorArguments(QStringLiteral("Orvan")));
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

TEST_F(JackIntegrationTest, AUnitReplugged100TimesUnderTheSameNamesGetsWhatIsSentAfterEachReplug)
{
    // given the engine, running
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    constexpr int kReplugs = 100;
    for (int i = 0; i < kReplugs; ++i) {
        // when the unit comes back with the same client and port names, and the user sets a gain
        JackChild unit = simulator(QStringLiteral("Orvan"));
        ASSERT_TRUE(unit.start());
        ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); })) << "replug " << i;
        // our Out reaches it before anything is sent
        ASSERT_TRUE(waitUntil([&] { return server->areConnected(kOurOut, QStringLiteral("Orvan:in")); })) << "replug " << i;
        const int gain = 6 + i % 19;
        engine.setGain(0, gain);

        // then the unit gets it
        const QString expected = QStringLiteral("b0 09 %1").arg(gain, 2, 16, QLatin1Char('0'));
        ASSERT_TRUE(waitUntil([&] { return messagesIn(unit.lines()).contains(expected); })) << "deaf after replug " << i;
        unit.stop();
        ASSERT_TRUE(waitUntil([&] { return !engine.isConnected(); })) << "unplug " << i;
    }
}

TEST_F(JackIntegrationTest, AUnitThatVanishesMidRecallAndReturnsGetsWhatIsSentAfterItsReturnOnly)
{
    // given the model over a connected unit, paced by real timers
    JackMidiSystem system;
    SystemClock& time = SystemClock::shared();
    OrvanMIDI engine(Catalogue::orvan(), system, time);
    RCUModel model(engine, time);
    auto first = pluggableSimulator();
    ASSERT_TRUE(first->start());
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));

    // when a reset is under way and the unit is unplugged after its first message
    model.resetAll();
    ASSERT_TRUE(waitUntil([&] { return !messagesIn(first->lines()).isEmpty(); }));
    first.reset();
    ASSERT_TRUE(waitUntil([&] { return !engine.isConnected(); }));

    // and it comes back, and the user switches the pad of channel 2 on
    JackChild second = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(second.start());
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));
    engine.set(OrvanSwitch::pad, 1, true);

    // then the returned unit gets it, and nothing of what was sent while it was away
    ASSERT_TRUE(waitUntil([&] { return messagesIn(second.lines()).contains(QStringLiteral("b0 12 7f")); }));
    const QStringList received = messagesIn(second.lines());
    EXPECT_EQ(received.first(), QStringLiteral("b0 12 7f")) << received.join(QLatin1Char('|')).toStdString();
}

/// A stand-in unit source: a JACK client whose output port is named "Orvan" and that writes one
/// event of raw bytes on request, from its process callback.
class RawEventSender {
public:
    explicit RawEventSender(std::vector<quint8> event)
        : m_event(std::move(event))
    {
        jack_status_t status{};
        m_client = jack_client_open("orvan-test-sender", JackNoStartServer, &status);
        if (!m_client)
            return;
        m_port = jack_port_register(m_client, "Orvan", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
        jack_set_process_callback(m_client, onProcess, this);
        jack_activate(m_client);
    }
    ~RawEventSender()
    {
        if (m_client)
            jack_client_close(m_client);
    }
    bool isOpen() const { return m_port != nullptr; }
    bool isHeard() const { return m_port && jack_port_connected(m_port) > 0; }
    void fire() { m_armed = true; }

private:
    static int onProcess(jack_nframes_t frames, void* arg)
    {
        auto* self = static_cast<RawEventSender*>(arg);
        void* buffer = jack_port_get_buffer(self->m_port, frames);
        jack_midi_clear_buffer(buffer);
        if (self->m_armed.exchange(false))
            jack_midi_event_write(buffer, 0, self->m_event.data(), self->m_event.size());
        return 0;
    }

    std::vector<quint8> m_event;
    jack_client_t* m_client = nullptr;
    jack_port_t* m_port = nullptr;
    std::atomic<bool> m_armed{false};
};

TEST_F(JackIntegrationTest, AnEventCarryingSeveralMessagesAppliesEveryControlChangeInItAndNothingElse)
{
    // given the engine listening to a source named like the unit
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    std::vector<quint8> sysEx{0xF0};
    sysEx.insert(sysEx.end(), 3000, 0x12); // reads as "pad on, channel 2" if taken for data
    sysEx.push_back(0xF7);
    std::vector<quint8> event{0xF8, 0xB0, 0x17, 0x7F, 0x19, 0x0A}; // clock; mute on, gain 10 by running status
    event.insert(event.end(), sysEx.begin(), sysEx.end());
    event.insert(event.end(), {0x93, 0x12, 0x7F, 0xE0, 0x15, 0x40}); // a note and a pitch bend
    event.insert(event.end(), {0xB5, 0x14, 0xF8, 0x7F});             // +48V on, clock inside
    RawEventSender sender(event);
    ASSERT_TRUE(sender.isOpen());
    ASSERT_TRUE(waitUntil([&] { return sender.isHeard(); }));

    // when the event arrives
    sender.fire();

    // then channel 2 shows exactly the three Control Changes
    ASSERT_TRUE(waitUntil([&] { return engine.channels()[1].phantom; }));
    ChannelState expected = defaultChannels(8)[1];
    expected.mute = true;
    expected.gainValue = 10;
    expected.phantom = true;
    EXPECT_EQ(engine.channels()[1], expected);
    EXPECT_EQ(engine.channels()[0], defaultChannels(8)[0]);
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
    ASSERT_TRUE(waitUntil([&] { return messagesIn(unit.lines()).size() >= kMessages; }, 10000))
        << unit.lines().join(QLatin1Char('|')).toStdString();

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

TEST_F(JackLateServerTest, AServerStartedAfterTheEnginesIsFoundWithItsUnitWithNoUserAction)
{
    // given the engine started with no JACK server
    JackTestServer late(QStringLiteral("late"));
    late.select();
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    ASSERT_TRUE(waitUntil([&] { return !system.isOpen(); }));

    // when a server and the unit come up
    ASSERT_TRUE(late.start(false));
    ASSERT_TRUE(waitUntil([&] { return system.isOpen(); })) << "the server was not noticed";
    JackChild unit = simulator(QStringLiteral("Orvan"));
    ASSERT_TRUE(unit.start());

    // then the unit is found and reached, and nobody called connect()
    ASSERT_TRUE(waitUntil([&] { return engine.isConnected(); }));
    engine.set(OrvanSwitch::polarity, 0, true);
    EXPECT_TRUE(waitUntil([&] { return messagesIn(unit.lines()).contains(QStringLiteral("b0 05 7f")); }));
    unit.stop();
    ASSERT_TRUE(waitUntil([&] { return !engine.isConnected(); }));
}

struct StopRow {
    const char* how;
    int signal;
};

class JackServerLifecycleTest : public testing::TestWithParam<StopRow> {
protected:
    void SetUp() override { DemoMode::shared().setActive(false); }
    ManualClock clock;
};

TEST_P(JackServerLifecycleTest, AServerThatStopsUnderTheEnginesAndStartsAgainIsFoundAgainWithItsUnit)
{
    // given the three engines of the app on a server, the Orvan unit connected
    JackTestServer server(QStringLiteral("lifecycle"));
    ASSERT_TRUE(server.start(false));
    auto system = createLinuxMidiSystem();
    std::vector<std::unique_ptr<OrvanMIDI>> engines;
    for (const DeviceSpec& spec : Catalogue::all())
        engines.push_back(std::make_unique<OrvanMIDI>(spec, *system, clock));
    OrvanMIDI& orvan = *engines.front();
    std::unique_ptr<JackChild> unit;
    // The unit comes up with the server, retrying until the server takes clients.
    const auto plugIn = [&] {
        return waitUntil([&] {
            unit = pluggableSimulator();
            return unit->start() && waitUntil([&] { return isReady(*unit); }, kUnitStartMilliseconds);
        });
    };
    ASSERT_TRUE(plugIn());
    ASSERT_TRUE(waitUntil([&] { return orvan.isConnected(); }));

    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        // when the server is stopped while the user keeps working (the unit goes with it)
        server.stop(GetParam().signal);
        orvan.setGain(0, 8);
        unit.reset();
        ASSERT_TRUE(waitUntil([&] { return !orvan.isConnected(); }));

        // and it is started again, and the unit with it
        ASSERT_TRUE(server.start(false));
        ASSERT_TRUE(plugIn());

        // then the engine finds the unit again with no user action, and reaches it
        ASSERT_TRUE(waitUntil([&] { return orvan.isConnected(); }));
        orvan.set(OrvanSwitch::mute, 2, round == 0);
        const QString expected = round == 0 ? QStringLiteral("b0 27 7f") : QStringLiteral("b0 27 00");
        EXPECT_TRUE(waitUntil([&] { return messagesIn(unit->lines()).contains(expected); }));
    }
    unit.reset();
    // and the engines and the system close with the server still up: no crash at exit
    engines.clear();
    system.reset();
}

INSTANTIATE_TEST_SUITE_P(Stops, JackServerLifecycleTest,
                         testing::Values(StopRow{"SIGTERM", SIGTERM}, StopRow{"SIGKILL", SIGKILL}),
                         [](const auto& info) { return std::string(info.param.how); });

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
