#include "ScrollAdjust.h"
#include "WheelNotches.h"

#include <gtest/gtest.h>

using namespace orvan;

TEST(ScrollAccumulator, TurnsDistanceIntoStepsTheSameWayWithNaturalScrollingOnOrOff)
{
    struct Row { std::vector<double> deltas; bool precise; std::vector<int> steps; double carry; };
    const Row rows[] = {
        {{0.3}, false, {1}, 0}, {{-0.3}, false, {-1}, 0}, {{1.2}, false, {1}, 0}, // a notch gives at least one step
        {{3.7}, false, {4}, 0}, {{2.5}, false, {3}, 0}, {{-2.5}, false, {-3}, 0}, // halves away from zero
        {{0}, false, {0}, 0},
        {{4, 4, 4}, true, {0, 0, 1}, 3}, {{-10, 2}, true, {-1, 0}, 1}, // nine trackpad points a step; the rest is kept
        {{27.5}, true, {3}, 0.5}, {{8.9, -8.9}, true, {0, 0}, 0},
    };
    for (const Row& row : rows) {
        for (bool natural : {false, true}) { // natural scrolling reports the opposite delta and says so
            ScrollAccumulator acc;
            std::vector<int> got;
            for (double d : row.deltas)
                got.push_back(acc.steps({natural ? -d : d, row.precise, natural}));
            EXPECT_EQ(got, row.steps) << row.deltas.front() << (natural ? " natural" : "");
            EXPECT_DOUBLE_EQ(acc.carry(), row.carry) << row.deltas.front();
        }
    }
}

TEST(ScrollRouter, TheControlEnteredLastOwnsTheWheelAndKeepsItsRestAcrossHovers)
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

    a.pointerEntered();
    EXPECT_TRUE(router.route({6, true, false})) << "short of a step, and still consumed";
    a.pointerLeft();
    a.pointerEntered();
    router.route({3, true, false}); // the rest survived leaving the control
    EXPECT_EQ(delivered, (std::vector<std::pair<char, int>>{{'B', 1}, {'A', 1}}));
}

TEST(WheelNotches, ANotchCountsOnceHoweverItIsSplitAndTurningBackDropsAHalfNotch)
{
    struct Row { std::vector<int> eighths, notches; };
    const Row rows[] = {
        {{15, 15, 15, 15, 15, 15, 15, 15}, {0, 0, 0, 0, 0, 0, 0, 1}}, {{60, 60, -60, -60}, {0, 1, 0, -1}},
        {{120, 240, -120}, {1, 2, -1}}, {{90, -60, -60}, {0, 0, -1}}, // the way back starts from a fresh notch
    };
    for (const Row& row : rows) {
        WheelNotches wheel;
        std::vector<int> got;
        for (int e : row.eighths)
            got.push_back(wheel.add(e));
        EXPECT_EQ(got, row.notches);
    }
}
