// The engines over a real MIDI system against simulated units: what a studio does to them.
#include "MidiBattery.h"

#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "RCUModel.h"
#include "time/SystemClock.h"

#include <utility>

using namespace std::chrono_literals;

namespace orvan::test {

namespace {

const QString kOrvan = QStringLiteral("Orvan");
constexpr int kChannels = 8;
constexpr int kResetMessages = kChannels + 3 * kChannels + kChannels; // +48V, gain/pad/polarity, mute

/// "b0 cc vv" for a Control Change on MIDI channel 1.
QString controlChange(int controller, int value)
{
    return QStringLiteral("b0 %1 %2").arg(controller, 2, 16, QLatin1Char('0')).arg(value, 2, 16, QLatin1Char('0'));
}

int controllerOf(const QString& bytes)
{
    return bytes.section(QLatin1Char(' '), 1, 1).toInt(nullptr, 16);
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

int sourcesNamed(const MidiSystem& system, const QString& name)
{
    int count = 0;
    for (int i = 0, n = system.sourceCount(); i < n; ++i)
        count += system.displayName(system.source(i)) == name ? 1 : 0;
    return count;
}

} // namespace

void MidiBattery::SetUp()
{
    rig = GetParam()();
    ASSERT_TRUE(rig) << "the MIDI system for the units did not come up";
    system = rig->createSystem();
    DemoMode::shared().setActive(false);
}

TEST_P(MidiBattery, AUnitIsFoundByItsExactDisplayNameOnly)
{
    struct Row {
        QString name;
        bool taken;
    };
    for (const Row& row : {Row{"Orvan 2", false}, Row{"orvan", false}, Row{"Orvan ", false}, Row{"Orvan", true}}) {
        SCOPED_TRACE(row.name.toStdString());
        // given a unit under that name, visible on the system
        OrvanMIDI engine(Catalogue::orvan(), *system, clock);
        auto unit = rig->unit(row.name);
        ASSERT_TRUE(unit->plug());
        ASSERT_TRUE(waitFor([&] { return listsBothWays(*system, row.name); }));

        // when the engine looks
        engine.connect();

        // then: a name that is not the unit's is turned down at once; the unit counts as present
        // once the system reports our Out wired to it, which JACK may do a cycle later
        if (row.taken)
            EXPECT_TRUE(waitFor([&] { return engine.hardwarePresent(); }));
        else
            EXPECT_FALSE(engine.hardwarePresent());
    }
}

TEST_P(MidiBattery, AUnitReplugged100TimesUnderTheSameNameHearsAndIsHeardEveryTime)
{
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    std::vector<bool> changes;
    QObject::connect(&engine, &OrvanMIDI::isConnectedChanged, [&](bool connected) { changes.push_back(connected); });
    constexpr int kReplugs = 100;
    for (int i = 0; i < kReplugs; ++i) {
        SCOPED_TRACE(i);
        const int channel = i % kChannels;
        // given the unit plugged in again under the same name
        auto unit = rig->unit(kOrvan);
        ASSERT_TRUE(unit->plug());
        ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

        // when the user flips a switch, then the unit receives it
        engine.set(OrvanSwitch::polarity, channel, true);
        const QString sent = controlChange(16 * channel + 5, 127);
        ASSERT_TRUE(waitFor([&] { return unit->receivedBytes().contains(sent); }));

        // when the unit reports, then the panel follows
        unit->play(controlChange(16 * channel + 7, 127));
        ASSERT_TRUE(waitFor([&] { return engine.channels()[channel].mute; }));

        // when it is pulled out, politely or all at once, then the engine lets go
        if (i % 2 == 0)
            unit->unplug();
        else
            unit->yank();
        ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
        ASSERT_EQ(engine.channels(), defaultChannels(kChannels));
        ASSERT_EQ(std::exchange(changes, {}), (std::vector<bool>{true, false})) << "one change each way";
    }
}

TEST_P(MidiBattery, AKnobTurnAtTheUnitShowsToTheDecibel)
{
    // given the unit, whose knob on channel 1 turns from 27 dB to 32 dB once the engine listens
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    auto unit = rig->unit(kOrvan, {QStringLiteral("--turn"), QStringLiteral("0:27:32"), QStringLiteral("--detent-ms"),
                                   QStringLiteral("10")});
    ASSERT_TRUE(unit->plug());

    // when its five coarse reports (9, 9, 10, 10, 10) arrive
    const bool shown = waitFor([&] { return shownGainDecibels(engine.channels()[0]) == 32; });

    // then every report was applied, in order
    EXPECT_TRUE(shown) << "shown: " << shownGainDecibels(engine.channels()[0]).value_or(-1);
    EXPECT_TRUE(engine.isConnected());
}

TEST_P(MidiBattery, AUnitThatVanishesInTheMiddleOfAResetGetsAWholeResetWhenItReturns)
{
    // given a connected unit, and a reset under way: the first messages are out
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    RCUModel model(engine, clock);
    auto first = rig->unit(kOrvan);
    ASSERT_TRUE(first->plug());
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));
    model.resetAll();
    clock.advance(2 * 12ms);
    ASSERT_TRUE(waitFor([&] { return first->received().size() >= 3; }));

    // when it vanishes, the rest of the reset falls due while it is gone, and it returns
    first->yank();
    ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
    clock.runUntilIdle();
    auto second = rig->unit(kOrvan);
    ASSERT_TRUE(second->plug());
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

    // then nothing of the old reset reaches it; a new reset arrives whole, in order
    model.resetAll();
    clock.runUntilIdle();
    ASSERT_TRUE(waitFor([&] { return second->received().size() >= std::size_t(kResetMessages); }));
    const QStringList whole = second->receivedBytes();
    EXPECT_EQ(whole.size(), kResetMessages);
    EXPECT_EQ(first->receivedBytes(), whole.mid(0, first->receivedBytes().size())) << "the first unit got a prefix";
    for (int ch = 0; ch < kChannels; ++ch) {
        EXPECT_EQ(controllerOf(whole.value(ch)), 16 * ch + 4) << "+48V first";
        EXPECT_EQ(controllerOf(whole.value(kChannels + 3 * ch)), 16 * ch + 9) << "then gain";
        EXPECT_EQ(controllerOf(whole.value(4 * kChannels + ch)), 16 * ch + 7) << "mute last";
    }
}

TEST_P(MidiBattery, OfTwoUnitsWithTheSameNameTheOneListedFirstIsTakenAndTheOtherWhenItLeaves)
{
    // given two units named "Orvan"; the sequencer lists the one plugged in first first
    auto listedFirst = rig->unit(kOrvan);
    ASSERT_TRUE(listedFirst->plug());
    auto listedSecond = rig->unit(kOrvan);
    ASSERT_TRUE(listedSecond->plug());
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

    // when the user mutes channel 1
    engine.set(OrvanSwitch::mute, 0, true);

    // then only the first one hears it, and only its reports count
    ASSERT_TRUE(waitFor([&] { return !listedFirst->received().empty(); }));
    listedSecond->play(controlChange(16 + 2, 127));
    listedFirst->play(controlChange(16 + 5, 127));
    ASSERT_TRUE(waitFor([&] { return engine.channels()[1].polarity; }));
    EXPECT_FALSE(engine.channels()[1].pad) << "a report from the unit not taken";
    EXPECT_EQ(listedFirst->receivedBytes(), QStringList{controlChange(7, 127)});
    EXPECT_TRUE(listedSecond->received().empty());

    // when the first leaves and the engine looks again, then the other is taken
    listedFirst->unplug();
    ASSERT_TRUE(waitFor([&] { return sourcesNamed(*system, kOrvan) == 1; }));
    engine.connect();
    EXPECT_TRUE(engine.isConnected());
    engine.setGain(2, 8);
    EXPECT_TRUE(waitFor([&] { return listedSecond->receivedBytes() == QStringList{controlChange(16 * 2 + 9, 8)}; }));
}

TEST_P(MidiBattery, EveryRequestIsOneControlChangeOnChannelOneWithTheProtocolsBytes)
{
    // given a connected unit
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    auto unit = rig->unit(kOrvan);
    ASSERT_TRUE(unit->plug());
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

    // when the user makes these requests, then the unit receives exactly these bytes, in order
    struct Row {
        std::function<void()> request;
        QString bytes;
    };
    const std::vector<Row> rows{
        {[&] { engine.setGain(0, 10); }, "b0 09 0a"},
        {[&] { engine.setGain(1, 30); }, "b0 19 18"},  // clamped to the top of the range
        {[&] { engine.set(OrvanSwitch::mute, 7, true); }, "b0 77 7f"},
        {[&] { engine.set(OrvanSwitch::pad, 2, false); }, "b0 22 00"},
        {[&] { engine.set(OrvanSwitch::phantom, 4, true); }, "b0 44 7f"},
        {[&] { engine.set(OrvanSwitch::polarity, 5, true); }, "b0 55 7f"},
    };
    QStringList expected;
    for (const Row& row : rows) {
        row.request();
        expected << row.bytes;
    }
    ASSERT_TRUE(waitFor([&] { return unit->received().size() >= rows.size(); }));
    EXPECT_EQ(unit->receivedBytes(), expected);
}

TEST_P(MidiBattery, AResetReachesTheUnitTwelveMillisecondsApartWithTheLongPauseAfterPhantom)
{
    // given the model over a connected unit, paced by real timers
    SystemClock& time = SystemClock::shared();
    OrvanMIDI engine(Catalogue::orvan(), *system, time);
    RCUModel model(engine, time);
    auto unit = rig->unit(kOrvan);
    ASSERT_TRUE(unit->plug());
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));

    // when the whole unit is reset
    model.resetAll();
    ASSERT_TRUE(waitFor([&] { return unit->received().size() >= std::size_t(kResetMessages); }));

    // then, by the unit's own clock, no two messages came closer than paced, and none earlier
    // than the pauses before it add up to
    const auto received = unit->received();
    ASSERT_EQ(received.size(), std::size_t(kResetMessages));
    // An emulated machine's clock may run slow by a fraction of a percent.
    const auto kStampError = rig->stampError();
    constexpr double kClockRate = 0.995;
    std::chrono::microseconds planned{0};
    for (std::size_t i = 1; i < received.size(); ++i) {
        const auto pause = i == kChannels ? 12ms + 900ms : 12ms;
        planned += pause;
        const auto gap = received[i].time - received[i - 1].time;
        EXPECT_GE(gap, pause * kClockRate - kStampError) << "between message " << i - 1 << " and " << i;
        const auto elapsed = received[i].time - received[0].time;
        EXPECT_GE(elapsed, planned * kClockRate - kStampError) << "message " << i << " after the first";
    }
}

TEST_P(MidiBattery, AFloodOfTenThousandReportsInASecondIsAppliedInOrder)
{
    // given a connected unit, and every gain the panel shows for channel 1 written down
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    auto unit = rig->unit(kOrvan);
    ASSERT_TRUE(unit->plug());
    ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));
    std::vector<qint64> shown;
    QObject::connect(&engine, &OrvanMIDI::channelsChanged, [&] {
        if (const auto gain = engine.channels()[0].gainValue; gain && (shown.empty() || shown.back() != *gain))
            shown.push_back(*gain);
    });

    // when the unit sends 10,000 gain reports, one every 100 microseconds, each unlike the last
    constexpr int kReports = 10000;
    constexpr int kLowest = 6, kValues = 19;
    std::vector<qint64> sent;
    QStringList bytes;
    for (int i = 0; i < kReports; ++i) {
        sent.push_back(kLowest + i % kValues);
        bytes << controlChange(9, int(sent.back()));
    }
    unit->play(bytes.join(QLatin1Char(' ')), 100us);

    // then the panel went through every one of them, in order
    waitFor([&] { return shown.size() >= sent.size(); }, 60s);
    EXPECT_EQ(shown.size(), sent.size());
    EXPECT_TRUE(shown == sent) << "first difference at "
                               << std::distance(sent.begin(), std::ranges::mismatch(sent, shown).in1);
}

TEST_P(MidiBattery, NothingButAControlChangeFromTheUnitChangesThePanel)
{
    // Each row: what the unit sends before it mutes channel 8, and the channels that then show mute.
    struct Row {
        const char* what;
        QString bytes;
        std::vector<int> muted;
    };
    const QString longSysEx = QStringLiteral("f0 7d") + QStringLiteral(" 09").repeated(1000) + QStringLiteral(" f7");
    const QString hugeSysEx = QStringLiteral("f0 7d") + QStringLiteral(" 17").repeated(60000) + QStringLiteral(" f7");
    const std::vector<Row> rows{
        {"an empty SysEx", "f0 f7", {}},
        {"a SysEx whose data read like a Control Change", "f0 7d 0b 07 7f f7", {}},
        {"a SysEx of 1,000 bytes", longSysEx, {}},
        {"a SysEx of 60,000 bytes", hugeSysEx, {}},
        {"notes on gain and mute controllers' numbers", "90 09 0a 80 09 0a 99 07 7f", {}},
        {"pitch bend, aftertouch, program change", "e0 09 0a a0 07 7f d0 09 c0 07", {}},
        {"system common and realtime", "f1 09 f2 07 7f f3 09 f6 f8 fa fb fc fe ff", {}},
        {"a SysEx cut short by a Control Change", "f0 7d 01 02 b0 07 7f", {0}},
        {"running status", "b0 07 7f 17 7f", {0, 1}},
        {"realtime bytes inside a Control Change", "b0 f8 27 f8 7f", {2}},
        {"a Control Change on MIDI channel 6", "b5 37 7f", {3}},
    };
    constexpr int kHeardChannel = 6;
    constexpr auto kHeardWait = 500ms;
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // given a unit just plugged in, and heard: on JACK the first cycles of a new wire can
        // still miss what the unit sends, so it first mutes channel 7, which no row touches
        auto unit = rig->unit(kOrvan);
        ASSERT_TRUE(unit->plug());
        ASSERT_TRUE(waitFor([&] { return engine.isConnected(); }));
        ASSERT_TRUE(waitFor([&] {
            unit->play(controlChange(16 * kHeardChannel + 7, 127));
            return waitFor([&] { return engine.channels()[kHeardChannel].mute; }, kHeardWait);
        }));

        // when it sends the row's bytes, then mutes channel 8
        unit->play(row.bytes + QLatin1Char(' ') + controlChange(16 * 7 + 7, 127));
        ASSERT_TRUE(waitFor([&] { return engine.channels()[7].mute; }));

        // then only the Control Changes among them show
        ChannelStates expected = defaultChannels(kChannels);
        expected[7].mute = true;
        expected[kHeardChannel].mute = true;
        for (int channel : row.muted)
            expected[std::size_t(channel)].mute = true;
        EXPECT_EQ(engine.channels(), expected);
        EXPECT_TRUE(engine.isConnected());

        unit->unplug();
        ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
    }
}

} // namespace orvan::test
