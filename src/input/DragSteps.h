#pragma once

#include <QPointF>
#include <functional>

namespace orvan {

/// How a dragged view turns vertical travel into steps.
struct DragProfile {
    double pointsPerStep;
    double minimumDistance; ///< travel from the press point before the drag begins
};

namespace DragProfiles {
inline constexpr DragProfile knob{8, 1};
inline constexpr DragProfile channelReadout{6, 1};
/// The small units' readouts take a click as selection, so a wobble under 3 points stays a click.
inline constexpr DragProfile dunraReadout{6, 3};
inline constexpr DragProfile melkoReadout{6, 3};
} // namespace DragProfiles

/// Vertical drag to whole steps: upward travel gives positive steps; the steps delivered during one
/// drag always add up to the truncated travel at the pointer's current position.
class DragSteps {
public:
    using StepSink = std::function<void(int delta)>;

    DragSteps(DragProfile profile, StepSink sink);

    void press(QPointF position);
    /// Returns true once the drag has begun (the press is no longer a click).
    bool move(QPointF position);
    /// Ends the drag; delivers nothing. Returns true if a drag had begun.
    bool release();

private:
    DragProfile m_profile;
    StepSink m_sink;
    QPointF m_pressPoint;
    bool m_pressed = false;
    bool m_dragging = false;
    int m_lastSteps = 0;
};

} // namespace orvan
