// The pacing of JACK's retries, driven by a ManualClock: when a refused wiring is tried again,
// and that an app with nothing to retry schedules nothing.
#include "midi/jack/RetryBackoff.h"
#include "time/ManualClock.h"

#include <gtest/gtest.h>
#include <vector>

using namespace orvan;
using namespace std::chrono_literals;

namespace {

/// A retry whose every try fails until `failuresLeft` runs out; records when each try ran.
struct Rig {
    ManualClock clock;
    int failuresLeft = 0;
    std::vector<std::chrono::milliseconds> tries;
    RetryBackoff retry{clock, [this] {
                           tries.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(clock.now()));
                           if (failuresLeft-- > 0)
                               retry.failed();
                           else
                               retry.succeeded();
                       }};
};

} // namespace

TEST(RetryBackoff, TriesWithGrowingPausesUntilItWorksOrTheTriesRunOut)
{
    struct Case { const char* what; int failures; std::vector<std::chrono::milliseconds> tries; }; // failures: of the tries
    const Case cases[] = {
        {"works at the first try", 0, {50ms}},
        {"works at the third", 2, {50ms, 150ms, 350ms}},
        {"never works: six tries, then quiet", 100, {50ms, 150ms, 350ms, 750ms, 1550ms, 3150ms}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Rig rig;
        rig.failuresLeft = c.failures;
        rig.retry.failed();
        rig.retry.failed(); // a second refusal while a try is due adds none
        rig.clock.advance(60s);
        EXPECT_EQ(rig.tries, c.tries);
        EXPECT_EQ(rig.clock.pendingTasks(), 0u);
    }
}

TEST(RetryBackoff, ASuccessStartsOverFromTheShortestPauseAndNothingRunsWithoutARefusal)
{
    Rig rig;
    rig.clock.advance(10s);
    EXPECT_TRUE(rig.tries.empty());
    rig.failuresLeft = 100;
    for (int i = 0; i < 2; ++i) {
        rig.retry.failed();
        rig.clock.advance(60s);
    }
    EXPECT_EQ(rig.tries.size(), 6u) << "gave up, and stays quiet";
    rig.retry.succeeded();
    rig.tries.clear();
    rig.failuresLeft = 0;
    const auto start = std::chrono::duration_cast<std::chrono::milliseconds>(rig.clock.now());
    rig.retry.failed();
    rig.clock.advance(60s);
    EXPECT_EQ(rig.tries, std::vector<std::chrono::milliseconds>{start + 50ms});
}
