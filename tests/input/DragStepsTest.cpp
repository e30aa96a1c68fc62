#include "DragSteps.h"

#include <gtest/gtest.h>

using namespace orvan;

namespace {
struct Recorder {
    std::vector<int> deltas;
    DragSteps::StepSink sink()
    {
        return [this](int d) { deltas.push_back(d); };
    }
};
} // namespace

TEST(DragSteps, KnobDeliversOneStepPerEightPointsAndTakesItBackOnTheWayDown)
{
    // (pointer y relative to the press, deltas delivered by that move); y grows downward.
    const std::vector<std::pair<double, std::vector<int>>> moves = {
        {-7.9, {}}, {-8, {1}}, {-20, {1}}, {-10, {-1}},
    };
    Recorder r;
    DragSteps knob(DragProfiles::knob, r.sink());
    knob.press({100, 100});
    for (const auto& [dy, expected] : moves) {
        r.deltas.clear();
        knob.move({100, 100 + dy});
        EXPECT_EQ(r.deltas, expected) << "at " << dy;
    }
    r.deltas.clear();
    EXPECT_TRUE(knob.release());
    EXPECT_TRUE(r.deltas.empty());
    EXPECT_EQ(knob.lastSteps(), 0);
}

TEST(DragSteps, TruncatesTowardZeroInBothDirections)
{
    Recorder r;
    DragSteps knob(DragProfiles::knob, r.sink());
    knob.press({0, 0});
    knob.move({0, 7.9});
    EXPECT_TRUE(r.deltas.empty());
    knob.move({0, 8});
    EXPECT_EQ(r.deltas, std::vector<int>{-1});
}

TEST(DragSteps, AFastMoveDeliversAllItsStepsAtOnce)
{
    Recorder r;
    DragSteps readout(DragProfiles::channelReadout, r.sink());
    readout.press({0, 0});
    readout.move({0, -6});
    readout.move({0, -36});
    EXPECT_EQ(r.deltas, (std::vector<int>{1, 5}));
}

TEST(DragSteps, HorizontalTravelDeliversNothing)
{
    Recorder r;
    DragSteps readout(DragProfiles::channelReadout, r.sink());
    readout.press({0, 0});
    EXPECT_TRUE(readout.move({200, 3}));
    EXPECT_TRUE(r.deltas.empty());
}

TEST(DragSteps, AWobbleUnderTheMinimumDistanceStaysAClick)
{
    struct Row {
        DragProfile profile;
        QPointF wobble;
        bool drags;
    };
    const Row rows[] = {
        {DragProfiles::dunraReadout, {2, 2}, false},  // 2.83 points
        {DragProfiles::dunraReadout, {0, 3}, true},
        {DragProfiles::melkoReadout, {-1.5, 2.5}, false},
        {DragProfiles::knob, {0, 1}, true},
        {DragProfiles::channelReadout, {0.5, 0.5}, false},
    };
    for (const Row& row : rows) {
        Recorder r;
        DragSteps drag(row.profile, r.sink());
        drag.press({10, 10});
        drag.move(QPointF(10, 10) + row.wobble);
        EXPECT_EQ(drag.release(), row.drags) << row.wobble.x() << "," << row.wobble.y();
    }
}

TEST(DragSteps, ANewDragStartsFromZero)
{
    Recorder r;
    DragSteps knob(DragProfiles::knob, r.sink());
    knob.press({0, 0});
    knob.move({0, -24});
    knob.release();
    knob.press({0, 0});
    knob.move({0, -8});
    EXPECT_EQ(r.deltas, (std::vector<int>{3, 1}));
}
