#include "DragSteps.h"

#include <gtest/gtest.h>

using namespace orvan;

TEST(DragSteps, DeliversTheTruncatedVerticalTravelInStepsOnceTheDragHasBegun)
{
    struct Row { const char* what; DragProfile profile; std::vector<QPointF> moves; std::vector<int> deltas; bool dragged; };
    // Moves are from the press point; y grows downward.
    const Row rows[] = {
        {"knob: 8 points a step, taken back on the way down", DragProfiles::knob,
         {{0, -7.9}, {0, -8}, {0, -20}, {0, -10}}, {1, 1, -1}, true},
        {"downward travel truncates toward zero too", DragProfiles::knob, {{0, 7.9}, {0, 8}}, {-1}, true},
        {"a fast move delivers all its steps at once", DragProfiles::channelReadout, {{0, -6}, {0, -36}}, {1, 5}, true},
        {"horizontal travel drags but steps nothing", DragProfiles::channelReadout, {{200, 3}}, {}, true},
        {"a 2.83 point wobble on the Dunra stays a click", DragProfiles::dunraReadout, {{2, 2}}, {}, false},
        {"3 points on the Dunra is a drag", DragProfiles::dunraReadout, {{0, 3}}, {}, true},
        {"a 2.9 point wobble on the Melko stays a click", DragProfiles::melkoReadout, {{-1.5, 2.5}}, {}, false},
        {"1 point on a knob is a drag", DragProfiles::knob, {{0, 1}}, {}, true},
        {"under 1 point on a channel readout stays a click", DragProfiles::channelReadout, {{0.5, 0.5}}, {}, false},
    };
    for (const Row& row : rows) {
        std::vector<int> deltas;
        DragSteps drag(row.profile, [&](int delta) { deltas.push_back(delta); });
        drag.press({10, 10});
        for (const QPointF& move : row.moves)
            drag.move(QPointF(10, 10) + move);
        EXPECT_EQ(drag.release(), row.dragged) << row.what;
        EXPECT_EQ(deltas, row.deltas) << row.what << " (a release delivers nothing)";
    }
}
