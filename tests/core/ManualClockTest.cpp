#include "time/ManualClock.h"

#include <QObject>
#include <gtest/gtest.h>

using namespace orvan;
using namespace std::chrono_literals;

TEST(ManualClock, RunsTasksInDueOrderWithTheClockAtEachDueTime)
{
    ManualClock clock;
    std::vector<std::pair<int, std::chrono::nanoseconds>> ran;
    clock.schedule(30ms, nullptr, [&] { ran.emplace_back(1, clock.now()); });
    clock.schedule(10ms, nullptr, [&] {
        ran.emplace_back(2, clock.now());
        clock.schedule(12ms, nullptr, [&] { ran.emplace_back(3, clock.now()); });
    });

    clock.advance(25ms);
    ASSERT_EQ(ran.size(), 2u);
    EXPECT_EQ(ran[0], std::make_pair(2, std::chrono::nanoseconds(10ms)));
    EXPECT_EQ(ran[1], std::make_pair(3, std::chrono::nanoseconds(22ms)));
    EXPECT_EQ(clock.now(), 25ms);

    clock.runUntilIdle();
    ASSERT_EQ(ran.size(), 3u);
    EXPECT_EQ(ran[2].first, 1);
}

TEST(ManualClock, DropsTasksWhoseContextIsGone)
{
    ManualClock clock;
    int runs = 0;
    {
        QObject context;
        clock.schedule(1ms, &context, [&] { ++runs; });
    }
    clock.runUntilIdle();
    EXPECT_EQ(runs, 0);
}
