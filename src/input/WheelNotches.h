#pragma once

namespace orvan {

/// Gathers a notched wheel's angle into whole notches. Many current mice report one notch (120
/// eighths of a degree) as several smaller events, 15, 30 or 60 at a time; counting each of those
/// as a line would turn one notch into eight steps.
class WheelNotches {
public:
    static constexpr int kEighthsPerNotch = 120;

    /// Adds one event's angle; returns the whole notches it completes (signed) and keeps the rest.
    /// Turning the other way drops a half-turned notch, so it never swallows the first notch back.
    int add(int eighths);

    int rest() const { return m_rest; }

private:
    int m_rest = 0;
};

} // namespace orvan
