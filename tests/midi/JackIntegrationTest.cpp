// The engines over a real JACK server (dummy driver, private name): what only JACK can do to the
// app. The scenarios every MIDI system shares are in the integration battery.
#include "Catalogue.h"
#include "DemoMode.h"
#include "JackUnitRig.h"
#include "OrvanMIDI.h"
#include "midi/LinuxMidiSystem.h"
#include "midi/jack/JackMidiSystem.h"
#include "time/ManualClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <atomic>
#include <jack/midiport.h>
#include <gtest/gtest.h>
#include <thread>

using namespace orvan;
using namespace orvan::test;

namespace {

class JackIntegrationTest : public testing::Test {
protected:
    void SetUp() override { DemoMode::shared().setActive(false); }

    ManualClock clock;
};

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
    ~RawEventSender() { if (m_client) jack_client_close(m_client); }
    bool isHeard() const { return m_port && jack_port_connected(m_port) > 0; }
    /// The full names of the ports wired to ours, and whether the server has a port of that name.
    QStringList wiredTo() const
    {
        QStringList names;
        const char** ports = jack_port_get_connections(m_port);
        for (const char** p = ports; p && *p; ++p)
            names << QString::fromUtf8(*p);
        jack_free(ports);
        return names;
    }
    bool exists(const char* port) const { return jack_port_by_name(m_client, port) != nullptr; }
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
    JackTestServer server(QStringLiteral("main"));
    ASSERT_TRUE(server.start());
    JackMidiSystem system;
    OrvanMIDI engine(Catalogue::orvan(), system, clock);
    std::vector<quint8> event{0xF8, 0xB0, 0x17, 0x7F, 0x19, 0x0A, 0xF0}; // clock; mute on, gain 10 by running status
    event.insert(event.end(), 3000, 0x12); // a SysEx whose data read as "pad on, channel 2"
    event.insert(event.end(), {0xF7, 0x93, 0x12, 0x7F, 0xE0, 0x15, 0x40}); // a note and a pitch bend
    event.insert(event.end(), {0xB5, 0x14, 0xF8, 0x7F});                   // +48V on, clock inside
    RawEventSender sender(event);
    ASSERT_TRUE(waitFor([&] { return sender.isHeard(); }));
    EXPECT_EQ(sender.wiredTo(), QStringList{"OrvanRCU-Orvan:In"}) << "the names the studio sees";
    EXPECT_TRUE(sender.exists("OrvanRCU-Orvan:Out"));
    sender.fire();
    // channel 2 shows exactly the three Control Changes
    ASSERT_TRUE(waitFor([&] { return engine.channels()[1].phantom; }));
    ChannelStates expected = defaultChannels(8);
    expected[1].mute = true;
    expected[1].gainValue = 10;
    expected[1].phantom = true;
    EXPECT_EQ(engine.channels(), expected);
}

TEST_F(JackIntegrationTest, AClientOpenedJustAfterTheServerDiedLeavesTheClientsStillOpenToUs)
{
    // given a client open on a server that dies: JACK's thread has reported it, the main loop
    // has not yet run (JACK's library deletes every open client itself when another opens now)
    JackTestServer server(QStringLiteral("stale"));
    ASSERT_TRUE(server.start());
    JackMidiSystem system;
    system.createOutputPort(system.createClient(QStringLiteral("orvan-test-first"), {}), QStringLiteral("Out"));
    ASSERT_TRUE(waitFor([&] { return system.isOpen(); }));
    server.stop(SIGKILL);
    const QDeadlineTimer deadline(std::chrono::seconds(10));
    while (system.isOpen() && !deadline.hasExpired())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_FALSE(system.isOpen());

    // when a second client opens in that moment (its start runs, the first one's shutdown not)
    system.createInputPort(system.createClient(QStringLiteral("orvan-test-second"), {}), QStringLiteral("In"), {});
    QCoreApplication::sendPostedEvents();

    // then the first is closed once, by us, with no crash, and both open once the server is back
    ASSERT_TRUE(server.start(false));
    EXPECT_TRUE(waitFor([&] {
        system.refresh();
        return system.sourceCount() == 1 && system.destinationCount() == 1;
    }));
}

TEST_F(JackIntegrationTest, TheAppEndsWithinSecondsEvenWhenClosingItsClientsNeverEnds)
{
    // given the app's three clients open on a server that then stops answering, as a close stuck
    // for good inside JACK's library does
    JackTestServer server(QStringLiteral("exit"));
    ASSERT_TRUE(server.start());
    auto system = std::make_unique<JackMidiSystem>();
    for (const DeviceSpec& spec : Catalogue::all())
        system->createClient(QStringLiteral("OrvanRCU-") + spec.title, {});
    ASSERT_TRUE(waitFor([&] { return system->isOpen(); }));
    server.pause(true);
    const auto began = std::chrono::steady_clock::now();
    system.reset();
    const auto took = std::chrono::steady_clock::now() - began;
    server.pause(false); // the clients left behind close once the server answers
    EXPECT_LT(took, std::chrono::seconds(4));
}

class JackServerLifecycleTest : public JackIntegrationTest, public testing::WithParamInterface<int> {};

TEST_P(JackServerLifecycleTest, AServerThatStartsLateStopsAndStartsAgainIsFoundEachTimeWithItsUnit)
{
    // the app's three engines start with no JACK server (on CI, no ALSA sequencer either)
    JackTestServer server(QStringLiteral("lifecycle"));
    server.select();
    auto system = createLinuxMidiSystem();
    std::vector<std::unique_ptr<OrvanMIDI>> engines;
    for (const DeviceSpec& spec : Catalogue::all())
        engines.push_back(std::make_unique<OrvanMIDI>(spec, *system, clock));
    OrvanMIDI& orvan = *engines.front();
    orvan.connect();
    orvan.setGain(0, 12);
    EXPECT_FALSE(orvan.isConnected());
    EXPECT_EQ(orvan.channels(), defaultChannels(8));

    std::unique_ptr<SimulatedUnit> unit;
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        if (round > 0) { // the server stops while the user keeps working, the unit with it
            server.stop(GetParam());
            orvan.setGain(0, 8);
            unit.reset();
            ASSERT_TRUE(waitFor([&] { return !orvan.isConnected(); }));
        }
        // it starts again, the unit once it takes clients; the engine finds, reaches and hears it
        ASSERT_TRUE(server.start(false));
        ASSERT_TRUE(waitFor([&] { return (unit = jackUnit(QStringLiteral("Orvan")))->plug(); }));
        ASSERT_TRUE(waitFor([&] { return orvan.isConnected(); }));
        const bool on = round % 2 == 0;
        orvan.set(OrvanSwitch::mute, 2, on);
        EXPECT_TRUE(waitFor([&] { return unit->receivedBytes().contains(on ? "b0 27 7f" : "b0 27 00"); }));
        EXPECT_TRUE(waitFor([&] {
            unit->play(on ? QStringLiteral("b0 37 7f") : QStringLiteral("b0 37 00"));
            return waitFor([&] { return orvan.channels()[3].mute == on; }, std::chrono::milliseconds(500));
        }));
    }
    unit.reset();
    engines.clear(); // closed with the server still up: no crash at exit
    system.reset();
}

INSTANTIATE_TEST_SUITE_P(Stops, JackServerLifecycleTest, testing::Values(SIGTERM, SIGKILL),
                         [](const auto& info) { return std::string(info.param == SIGTERM ? "SIGTERM" : "SIGKILL"); });

} // namespace
