// Starts of the app's engines against a unit already plugged in, on the real kernel sequencer:
// every start must wire both ways (the unit hears a click, the panel shows the unit's report)
// within two seconds. ORVAN_SOAK_ROUNDS sets how many starts (30 unless set).
#include "StudioRig.h"

#include "Catalogue.h"
#include "DemoMode.h"
#include "OrvanMIDI.h"
#include "midi/LinuxMidiSystem.h"
#include "time/ManualClock.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>
#include <iostream>

using namespace std::chrono_literals;

namespace orvan::test {

namespace {

constexpr int kDefaultRounds = 30;
constexpr auto kWiringLimit = 2s;
// A miss is still waited for a while, so a slow start is told apart from one that never wires.
constexpr auto kGiveUp = 10s;

TEST(AlsaStartSoak, EveryStartWiresBothWaysWithinTwoSeconds)
{
    DemoMode::shared().setActive(false);
    auto unit = alsaUnit(QStringLiteral("Orvan"));
    ASSERT_TRUE(unit->plug());
    ManualClock clock;

    const int set = qEnvironmentVariableIntValue("ORVAN_SOAK_ROUNDS");
    const int starts = set > 0 ? set : kDefaultRounds;
    int misses = 0;
    std::chrono::milliseconds slowest{0};
    for (int round = 0; round < starts; ++round) {
        // Each round its own switch, so a click or report of an earlier round never counts.
        const int channel = round % 8;
        const bool on = round / 8 % 2 == 0;
        const QString click = QStringLiteral("b0 %1 %2").arg(16 * channel + 5, 2, 16, QLatin1Char('0')).arg(on ? "7f" : "00");
        const QString reported = QStringLiteral("b0 %1 %2").arg(16 * channel + 7, 2, 16, QLatin1Char('0')).arg(on ? "7f" : "00");
        const qsizetype clicksBefore = unit->receivedBytes().count(click);

        QElapsedTimer started;
        started.start();
        auto system = createLinuxMidiSystem();
        OrvanMIDI engine(Catalogue::orvan(), *system, clock);
        const bool linked = waitFor([&] { return engine.isConnected(); }, kGiveUp);
        engine.set(OrvanSwitch::polarity, channel, on);
        const bool heard = linked && waitFor([&] { return unit->receivedBytes().count(click) > clicksBefore; }, kGiveUp);
        unit->play(reported);
        const bool shown = heard && waitFor([&] { return engine.channels()[channel].mute == on; }, kGiveUp);
        const auto took = std::chrono::milliseconds(started.elapsed());

        slowest = std::max(slowest, took);
        const bool missed = !shown || took > kWiringLimit;
        misses += missed ? 1 : 0;
        std::cout << "start " << round + 1 << ": " << (shown ? "wired" : linked ? "linked, not wired" : "never linked")
                  << " in " << took.count() << " ms" << (missed ? "  MISS" : "") << "\n";
    }
    std::cout << "ALSA start soak: " << starts << " starts, " << misses << " misses, slowest wiring "
              << slowest.count() << " ms" << std::endl;
    EXPECT_EQ(misses, 0);
}

} // namespace

} // namespace orvan::test
