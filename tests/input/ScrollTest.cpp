#include "ScrollAdjust.h"
#include "WheelNotches.h"

#include <gtest/gtest.h>

using namespace orvan;

TEST(ScrollAccumulator, WheelLinesGiveAtLeastOneStepAndRoundHalvesAway)
{
    const std::pair<double, int> rows[] = {{0.3, 1}, {-0.3, -1}, {3.7, 4}, {2.5, 3}, {1.2, 1}, {-2.5, -3}, {0, 0}};
    for (auto [lines, steps] : rows) {
        ScrollAccumulator acc;
        EXPECT_EQ(acc.steps({lines, false, false}), steps) << lines << " lines";
        EXPECT_EQ(acc.carry(), 0) << "lines never touch the carry";
    }
}

TEST(ScrollAccumulator, TrackpadPointsAccumulateToNinePerStep)
{
    struct Row {
        std::vector<double> deltas;
        std::vector<int> steps;
        double carry;
    };
    const Row rows[] = {
        {{4, 4, 4}, {0, 0, 1}, 3},
        {{-10, 2}, {-1, 0}, 1},
        {{27.5}, {3}, 0.5},
        {{8.9, -8.9}, {0, 0}, 0},
    };
    for (const Row& row : rows) {
        ScrollAccumulator acc;
        std::vector<int> got;
        for (double d : row.deltas)
            got.push_back(acc.steps({d, true, false}));
        EXPECT_EQ(got, row.steps);
        EXPECT_DOUBLE_EQ(acc.carry(), row.carry);
    }
}

TEST(ScrollAccumulator, TheSameSwipeGivesTheSameSignWithNaturalScrollingOnOrOff)
{
    ScrollAccumulator plain, natural;
    // Natural scrolling reports the opposite delta and says so.
    EXPECT_EQ(plain.steps({18, true, false}), 2);
    EXPECT_EQ(natural.steps({-18, true, true}), 2);
    EXPECT_EQ(plain.steps({-1, false, false}), -1);
    EXPECT_EQ(natural.steps({1, false, true}), -1);
}

TEST(ScrollRouter, TheControlEnteredLastOwnsTheWheelAndALateLeaveDoesNotUnhookIt)
{
    ScrollRouter router;
    std::vector<std::pair<char, int>> delivered;
    ScrollAdjust a([&](int s) { delivered.emplace_back('A', s); }, router);
    ScrollAdjust b([&](int s) { delivered.emplace_back('B', s); }, router);

    a.pointerEntered();
    b.pointerEntered(); // the pointer moved straight from A onto B
    a.pointerLeft();    // A's leave arrives late

    EXPECT_TRUE(router.route({1, false, false}));
    EXPECT_EQ(delivered, (std::vector<std::pair<char, int>>{{'B', 1}}));

    b.pointerLeft();
    EXPECT_FALSE(router.route({1, false, false})) << "with no owner the event is delivered normally";
    EXPECT_EQ(delivered.size(), 1u);
}

TEST(ScrollRouter, AnEventThatMakesNoWholeStepIsStillConsumedButCallsNothing)
{
    ScrollRouter router;
    int calls = 0;
    ScrollAdjust knob([&](int) { ++calls; }, router);
    knob.pointerEntered();
    EXPECT_TRUE(router.route({4, true, false}));
    EXPECT_EQ(calls, 0);
}

TEST(ScrollRouter, TheCarrySurvivesLeavingAndReenteringTheControl)
{
    ScrollRouter router;
    std::vector<int> steps;
    ScrollAdjust knob([&](int s) { steps.push_back(s); }, router);
    knob.pointerEntered();
    router.route({6, true, false});
    knob.pointerLeft();
    knob.pointerEntered();
    router.route({3, true, false});
    EXPECT_EQ(steps, std::vector<int>{1});
}

TEST(WheelNotches, ANotchCountsOnceHoweverItIsSplitAndTurningBackDropsAHalfNotch)
{
    struct Row {
        std::vector<int> eighths;
        std::vector<int> notches;
    };
    const Row rows[] = {
        {{15, 15, 15, 15, 15, 15, 15, 15}, {0, 0, 0, 0, 0, 0, 0, 1}},
        {{30, 30, 30, 30}, {0, 0, 0, 1}},
        {{60, 60, -60, -60}, {0, 1, 0, -1}},
        {{120, 240, -120}, {1, 2, -1}},
        {{90, -60, -60}, {0, 0, -1}}, // the way back starts from a fresh notch
    };
    for (const Row& row : rows) {
        WheelNotches wheel;
        std::vector<int> got;
        for (int e : row.eighths)
            got.push_back(wheel.add(e));
        EXPECT_EQ(got, row.notches);
    }
}
