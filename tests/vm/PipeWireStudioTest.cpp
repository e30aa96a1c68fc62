// The engines on a PipeWire studio, in the VM: the unit is the kernel sequencer's client and,
// through PipeWire's bridge, also a port in the graph. tests/vm/with-pipewire runs this once with
// jackd2's JACK library (JACK finds no server) and once with PipeWire's (JACK sees the graph).
#include "StudioRig.h"

#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "UnitName.h"
#include "midi/LinuxMidiSystem.h"
#include "midi/alsa/AlsaMidiSystem.h"
#include "midi/jack/JackMidiSystem.h"
#include "time/SystemClock.h"

#include <QUuid>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace orvan::test {

namespace {

const QString kOrvan = QStringLiteral("Orvan");
const QString kLinked = QStringLiteral("Orvan USB: Linked");
// Longer than PipeWire's cycles: a copy of a message on a second path would show within it.
constexpr auto kQuiet = 300ms;
constexpr std::size_t kChannels = 8;
// A click, a gain step, then a recall: +48V, gain/pad/polarity and mute for every channel.
constexpr std::size_t kRecallMessages = kChannels + 3 * kChannels + kChannels;
constexpr std::size_t kMessages = 2 + kRecallMessages;
constexpr std::size_t kFirstRecalled = 2;

bool withPipeWireJack() { return qgetenv("ORVAN_JACK_LIBRARY") == "pipewire"; }

Preset recalledPreset()
{
    Preset preset{QUuid::createUuid(), QStringLiteral("Studio"), {}};
    for (std::size_t c = 0; c < kChannels; ++c)
        preset.channels << ChannelSnapshot{.gainValue = qint64(6 + c), .pad = c % 2 == 0, .polarity = c % 3 == 0, .di = std::nullopt};
    return preset;
}

struct Drive {
    std::vector<ReceivedMessage> received; ///< by the unit: click, gain step, recall
    QStringList names;                     ///< every endpoint the system listed while linked
    QStringList readers;                   ///< the sequencer clients reading from the unit
};

bool listsTheBridgedUnit(const QStringList& names)
{
    return std::ranges::any_of(names, [](const QString& line) {
        return matchUnitName(line.section(QStringLiteral(": "), 1), kOrvan) == UnitNameMatch::bridged;
    });
}

/// Until a report from the unit shows: a link through the graph may carry reports a little after
/// the panel says Linked. False if none ever shows.
bool reportsArrive(SimulatedUnit& unit, const OrvanMIDI& engine)
{
    constexpr int kTries = 20;
    for (int i = 0; i < kTries; ++i) {
        unit.play(QStringLiteral("b0 77 7f")); // channel 8 mute on
        if (waitFor([&] { return engine.channels()[kChannels - 1].mute; }, 500ms))
            return true;
    }
    return false;
}

/// A studio's session with one unit: link, a detent reported by the unit, a click, a gain step
/// and a paced recall, then the unit pulled out and plugged back in. With `bridgeSeen`, waits
/// until the system lists the unit through the bridge too, so both are there to choose from.
Drive drive(MidiSystem& system, SimulatedUnit& unit, bool bridgeSeen = false)
{
    Drive seen;
    SystemClock& time = SystemClock::shared();
    OrvanMIDI engine(Catalogue::orvan(), system, time);
    RCUModel model(engine, time);
    EXPECT_TRUE(waitFor([&] { return engine.isConnected(); })) << "never linked";
    EXPECT_EQ(model.lcdLines().first, kLinked);
    if (bridgeSeen)
        waitFor([&] { return listsTheBridgedUnit(endpointNames(system)); });
    seen.names = endpointNames(system);
    EXPECT_TRUE(reportsArrive(unit, engine)) << "no report from the unit ever showed";
    seen.readers = sequencerReadersOf(kOrvan);

    // The unit reports a 3 dB step, then repeats it for one 1 dB detent: one decibel, not two.
    const auto shown = [&] { return shownGainDecibels(engine.channels()[0]); };
    unit.play(QStringLiteral("b0 09 0a"));
    EXPECT_TRUE(waitFor([&] { return shown() == 30; }));
    unit.play(QStringLiteral("b0 09 0a"));
    EXPECT_TRUE(waitFor([&] { return shown() == 31; }));
    EXPECT_TRUE(staysTrue([&] { return shown() == 31; }, kQuiet)) << "the detent was applied twice";

    model.apply(OrvanSwitch::polarity, {0});
    model.adjustGain(1, {0});
    model.recall(recalledPreset());
    EXPECT_TRUE(waitFor([&] { return unit.received().size() >= kMessages; }));
    EXPECT_TRUE(staysTrue([&] { return unit.received().size() == kMessages; }, kQuiet)) << "more than once";
    seen.received = unit.received();

    unit.unplug();
    EXPECT_TRUE(waitFor([&] { return !engine.isConnected(); }));
    EXPECT_NE(model.lcdLines().first, kLinked);
    EXPECT_TRUE(unit.plug() && waitFor([&] { return engine.isConnected(); })) << "not linked after replug";
    model.apply(OrvanSwitch::mute, {1});
    const auto clicks = [&] { return unit.receivedBytes().count(QStringLiteral("b0 17 7f")); };
    EXPECT_TRUE(waitFor([&] { return clicks() >= 1; }));
    EXPECT_TRUE(staysTrue([&] { return clicks() == 1; }, kQuiet)) << "the click after replug, more than once";
    return seen;
}

/// The recall's pacing by the unit's clock, as on plain ALSA: 12 ms apart, the +48V pause after
/// the +48V messages. `slack`: how far a stamp may sit from the real arrival.
void expectPaced(const std::vector<ReceivedMessage>& received, std::chrono::microseconds slack)
{
    constexpr double kClockRate = 0.995; // an emulated machine's clock may run slow
    for (std::size_t i = kFirstRecalled + 1; i < received.size(); ++i) {
        const auto pause = i == kFirstRecalled + kChannels ? 12ms + 900ms : 12ms;
        EXPECT_GE(received[i].time - received[i - 1].time, pause * kClockRate - slack) << "before message " << i;
    }
}

std::string bytesOf(const std::vector<ReceivedMessage>& received, bool inAnyOrder = false)
{
    QStringList bytes;
    for (const auto& m : received)
        bytes << m.bytes;
    if (inAnyOrder)
        bytes.sort();
    return bytes.join(QStringLiteral(", ")).toStdString();
}

/// How the bytes and pacing look on plain ALSA, in this same VM; driven once per run.
const Drive& plainAlsa()
{
    static const Drive plain = [] {
        AlsaMidiSystem alsa;
        auto unit = alsaUnit(kOrvan);
        EXPECT_TRUE(unit->plug());
        Drive d = drive(alsa, *unit);
        EXPECT_EQ(d.received.size(), kMessages);
        expectPaced(d.received, 4ms);
        return d;
    }();
    return plain;
}

class PipeWireStudio : public testing::Test {
    void SetUp() override { DemoMode::shared().setActive(false); }
};

TEST_F(PipeWireStudio, TheAppDrivesAUnitSeenTwiceOnceThroughTheKernelSequencer)
{
    // the unit on the kernel sequencer, bridged into PipeWire's graph, driven by the app's own system
    const Drive& plain = plainAlsa();
    auto unit = alsaUnit(kOrvan);
    ASSERT_TRUE(unit->plug());
    auto system = createLinuxMidiSystem();
    const Drive d = drive(*system, *unit, withPipeWireJack());
    // JACK saw the bridged unit exactly when its library is PipeWire's, yet the unit was
    // driven through the sequencer alone: every message once, in the bytes and pacing of plain ALSA
    EXPECT_EQ(listsTheBridgedUnit(d.names), withPipeWireJack()) << d.names.join(QStringLiteral(" | ")).toStdString();
    EXPECT_EQ(d.readers.join(QStringLiteral(", ")).toStdString(), "OrvanRCU-Orvan");
    EXPECT_EQ(bytesOf(d.received), bytesOf(plain.received));
    expectPaced(d.received, 4ms);
}

TEST_F(PipeWireStudio, AUnitOnlyInTheGraphIsFoundThereAndDrivenOnce)
{
    if (!withPipeWireJack())
        GTEST_SKIP() << "with jackd2's library there is no JACK server: nothing is only in the graph";
    const Drive& plain = plainAlsa();
    auto unit = alsaUnit(kOrvan);
    ASSERT_TRUE(unit->plug());
    JackMidiSystem jack; // only JACK looks: the unit is reachable only through PipeWire's bridge
    const Drive d = drive(jack, *unit);
    // the bridge carries it, every message once; its cycles may hold a message back one
    // period, and under load it was seen to swap two neighbours 12 ms apart (always different
    // controllers), so the order is checked where it matters: the +48V block before its pause
    EXPECT_FALSE(d.readers.contains(QStringLiteral("OrvanRCU-Orvan"))) << d.readers.join(QStringLiteral(", ")).toStdString();
    EXPECT_EQ(bytesOf(d.received, true), bytesOf(plain.received, true));
    expectPaced(d.received, 25ms);
}

} // namespace

} // namespace orvan::test
