#include "WheelNotches.h"

namespace orvan {

int WheelNotches::add(int eighths)
{
    if ((eighths > 0 && m_rest < 0) || (eighths < 0 && m_rest > 0))
        m_rest = 0;
    const int total = m_rest + eighths;
    const int notches = total / kEighthsPerNotch; // truncates toward zero
    m_rest = total - notches * kEighthsPerNotch;
    return notches;
}

} // namespace orvan
