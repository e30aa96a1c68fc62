// The engines over a real JACK server (dummy driver, private name) against orvan-unit-sim.
#include "Catalogue.h"
#include "DemoMode.h"
#include "JackTestServer.h"
#include "JackUnitRig.h"
#include "OrvanMIDI.h"
#include "midi/LinuxMidiSystem.h"
#include "midi/jack/JackMidiSystem.h"
#include "time/ManualClock.h"

#include <atomic>
#include <jack/midiport.h>
#include <gtest/gtest.h>

using namespace orvan;
using namespace orvan::test;

namespace {

const QString kOrvan = QStringLiteral("Orvan");
const QString kOurOut = QStringLiteral("OrvanRCU-Orvan:Out");

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

TEST_F(JackIntegrationTest, OurOutReachesAReturningUnitAsSoonAsItIsFoundBeforeAnythingIsSent)
{
    // given the engine, running
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    constexpr int kReplugs = 5;
    for (int i = 0; i < kReplugs; ++i) {
        SCOPED_TRACE(i);
        // when the unit comes back with the same client and port names
        auto unit = jackUnit(kOrvan);
        ASSERT_TRUE(unit->plug());
        ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

        // then our Out is wired to it already: JACK dropped the old wire with the old port
        EXPECT_TRUE(server->areConnected(kOurOut, QStringLiteral("Orvan:in")));
        unit->unplug();
        ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
    }
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
    ASSERT_TRUE(waitFor([&] { return sender.isHeard(); }));

    // when the event arrives
    sender.fire();

    // then channel 2 shows exactly the three Control Changes
    ASSERT_TRUE(waitFor([&] { return engine.channels()[1].phantom; }));
    ChannelState expected = defaultChannels(8)[1];
    expected.mute = true;
    expected.gainValue = 10;
    expected.phantom = true;
    EXPECT_EQ(engine.channels()[1], expected);
    EXPECT_EQ(engine.channels()[0], defaultChannels(8)[0]);
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
    ASSERT_TRUE(waitFor([&] { return !system.isOpen(); }));

    // when a server and the unit come up
    ASSERT_TRUE(late.start(false));
    ASSERT_TRUE(waitFor([&] { return system.isOpen(); })) << "the server was not noticed";
    auto unit = jackUnit(kOrvan);
    ASSERT_TRUE(unit->plug());

    // then the unit is found and reached, and nobody called connect()
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));
    engine.set(OrvanSwitch::polarity, 0, true);
    EXPECT_TRUE(waitFor([&] { return unit->receivedBytes().contains(QStringLiteral("b0 05 7f")); }));
    unit->unplug();
    ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
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
    std::unique_ptr<SimulatedUnit> unit;
    // The unit comes up with the server, retrying until the server takes clients.
    const auto plugIn = [&] {
        return waitFor([&] {
            unit = jackUnit(kOrvan);
            return unit->plug();
        });
    };
    ASSERT_TRUE(plugIn());
    ASSERT_TRUE(waitFor([&] { return orvan.isConnected(); }));

    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        // when the server is stopped while the user keeps working (the unit goes with it)
        server.stop(GetParam().signal);
        orvan.setGain(0, 8);
        unit.reset();
        ASSERT_TRUE(waitFor([&] { return !orvan.isConnected(); }));

        // and it is started again, and the unit with it
        ASSERT_TRUE(server.start(false));
        ASSERT_TRUE(plugIn());

        // then the engine finds the unit again with no user action, and reaches it
        ASSERT_TRUE(waitFor([&] { return orvan.isConnected(); }));
        orvan.set(OrvanSwitch::mute, 2, round == 0);
        const QString expected = round == 0 ? QStringLiteral("b0 27 7f") : QStringLiteral("b0 27 00");
        EXPECT_TRUE(waitFor([&] { return unit->receivedBytes().contains(expected); }));
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
