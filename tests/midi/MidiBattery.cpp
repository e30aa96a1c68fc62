// The engines over a real MIDI system against simulated units: what a studio does to them.
#include "MidiBattery.h"

#include "Catalogue.h"
#include "DemoMode.h"
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

} // namespace

void MidiBattery::SetUp()
{
    rig = GetParam()();
    ASSERT_TRUE(rig) << "the MIDI system for the units did not come up";
    system = rig->createSystem();
    DemoMode::shared().setActive(false);
}

std::unique_ptr<SimulatedUnit> MidiBattery::linkedUnit(const OrvanMIDI& engine)
{
    auto unit = rig->unit(kOrvan);
    return unit->plug() && waitFor([&] { return engine.isConnected(); }) ? std::move(unit) : nullptr;
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
        auto unit = linkedUnit(engine);
        ASSERT_TRUE(unit);

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

TEST_P(MidiBattery, AUnitThatVanishesInTheMiddleOfAResetGetsAWholeResetWhenItReturns)
{
    // given a connected unit, and a reset under way: the first messages are out
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    RCUModel model(engine, clock);
    auto first = linkedUnit(engine);
    ASSERT_TRUE(first);
    model.resetAll();
    clock.advance(2 * 12ms);
    ASSERT_TRUE(waitFor([&] { return first->received().size() >= 3; }));

    // when it vanishes, the rest of the reset falls due while it is gone, and it returns
    first->yank();
    ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
    clock.runUntilIdle();
    auto second = linkedUnit(engine);
    ASSERT_TRUE(second);

    // then nothing of the old reset reaches it; a new reset arrives whole
    model.resetAll();
    clock.runUntilIdle();
    ASSERT_TRUE(waitFor([&] { return second->received().size() >= std::size_t(kResetMessages); }));
    const QStringList whole = second->receivedBytes();
    EXPECT_EQ(whole.size(), kResetMessages);
    EXPECT_EQ(first->receivedBytes(), whole.mid(0, first->receivedBytes().size())) << "the first unit got a prefix";
}

TEST_P(MidiBattery, AResetReachesTheUnitTwelveMillisecondsApartWithTheLongPauseAfterPhantom)
{
    // given the model over a connected unit, paced by real timers
    SystemClock& time = SystemClock::shared();
    OrvanMIDI engine(Catalogue::orvan(), *system, time);
    RCUModel model(engine, time);
    auto unit = linkedUnit(engine);
    ASSERT_TRUE(unit);

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
    auto unit = linkedUnit(engine);
    ASSERT_TRUE(unit);
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

} // namespace orvan::test
