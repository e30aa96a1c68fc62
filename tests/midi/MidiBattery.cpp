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
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        const int channel = i % kChannels;
        auto unit = linkedUnit(engine);
        ASSERT_TRUE(unit);
        // a switch reaches the unit, its report reaches the panel
        engine.set(OrvanSwitch::polarity, channel, true);
        ASSERT_TRUE(waitFor([&] { return unit->receivedBytes().contains(controlChange(16 * channel + 5, 127)); }));
        unit->play(controlChange(16 * channel + 7, 127));
        ASSERT_TRUE(waitFor([&] { return engine.channels()[channel].mute; }));
        // pulled out politely or all at once, the engine lets go
        unit->unplug(i % 2 == 1);
        ASSERT_TRUE(waitFor([&] { return !engine.isConnected(); }));
        ASSERT_EQ(engine.channels(), defaultChannels(kChannels));
        ASSERT_EQ(std::exchange(changes, {}), (std::vector<bool>{true, false})) << "one change each way";
    }
}

TEST_P(MidiBattery, AUnitThatVanishesInTheMiddleOfAResetGetsAWholeResetWhenItReturns)
{
    // given a reset under way, its first messages out
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    RCUModel model(engine, clock);
    auto first = linkedUnit(engine);
    ASSERT_TRUE(first);
    model.resetAll();
    clock.advance(2 * 12ms);
    ASSERT_TRUE(waitFor([&] { return first->received().size() >= 3; }));
    // when the unit vanishes, the rest falls due while it is gone, and it returns
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
    // paced by real timers, stamped by the unit's own clock
    SystemClock& time = SystemClock::shared();
    OrvanMIDI engine(Catalogue::orvan(), *system, time);
    RCUModel model(engine, time);
    auto unit = linkedUnit(engine);
    ASSERT_TRUE(unit);
    model.resetAll();
    ASSERT_TRUE(waitFor([&] { return unit->received().size() >= std::size_t(kResetMessages); }));
    // no two messages closer than paced, none earlier than the pauses before it add up to
    const auto received = unit->received();
    ASSERT_EQ(received.size(), std::size_t(kResetMessages));
    const auto kStampError = rig->stampError();
    constexpr double kClockRate = 0.995; // an emulated machine's clock may run slow
    std::chrono::microseconds planned{0};
    for (std::size_t i = 1; i < received.size(); ++i) {
        const auto pause = i == kChannels ? 12ms + 900ms : 12ms;
        planned += pause;
        EXPECT_GE(received[i].time - received[i - 1].time, pause * kClockRate - kStampError) << "before message " << i;
        EXPECT_GE(received[i].time - received[0].time, planned * kClockRate - kStampError) << "message " << i << " after the first";
    }
}

TEST_P(MidiBattery, AFloodOfTenThousandReportsInASecondIsAppliedInOrder)
{
    // every gain the panel shows for channel 1 written down
    OrvanMIDI engine(Catalogue::orvan(), *system, clock);
    auto unit = linkedUnit(engine);
    ASSERT_TRUE(unit);
    std::vector<qint64> shown;
    QObject::connect(&engine, &OrvanMIDI::channelsChanged, [&] {
        if (const auto gain = engine.channels()[0].gainValue; gain && (shown.empty() || shown.back() != *gain))
            shown.push_back(*gain);
    });

    // 10,000 gain reports, one every 100 microseconds, each unlike the last
    std::vector<qint64> sent;
    QStringList bytes;
    for (int i = 0; i < 10000; ++i) {
        sent.push_back(6 + i % 19);
        bytes << controlChange(9, int(sent.back()));
    }
    unit->play(bytes.join(QLatin1Char(' ')), 100us);
    waitFor([&] { return shown.size() >= sent.size(); }, 60s);
    EXPECT_EQ(shown.size(), sent.size());
    EXPECT_TRUE(shown == sent) << "first difference at "
                               << std::distance(sent.begin(), std::ranges::mismatch(sent, shown).in1);
}

} // namespace orvan::test
