#pragma once

#include "ScrollEvent.h"

namespace orvan {

/// Turns scroll distance into whole gain steps for one control. Lives as long as its control and
/// keeps the fractional rest across events and hovers.
class ScrollAccumulator {
public:
    /// Points of precise scrolling that make one step.
    static constexpr double kPointsPerStep = 9.0;

    /// Positive means more (a higher gain), whatever the user's scrolling-direction setting.
    int steps(const ScrollEvent& event);

    double carry() const { return m_carry; }

private:
    double m_carry = 0;
};

} // namespace orvan
