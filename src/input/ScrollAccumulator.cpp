#include "ScrollAccumulator.h"

#include <algorithm>
#include <cmath>

namespace orvan {

int ScrollAccumulator::steps(const ScrollEvent& event)
{
    const double v = event.inverted ? -event.deltaY : event.deltaY;
    if (event.precise) {
        const double total = v + m_carry;
        const int steps = int(std::trunc(total / kPointsPerStep));
        m_carry = total - steps * kPointsPerStep;
        return steps;
    }
    // A wheel notch always gives at least one step; a fast wheel reporting several lines gives more.
    if (event.deltaY == 0)
        return 0;
    const int rounded = int(std::round(v)); // halves away from zero
    return v > 0 ? std::max(rounded, 1) : std::min(rounded, -1);
}

} // namespace orvan
