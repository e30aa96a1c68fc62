#pragma once

#include <chrono>

namespace orvan {

/// A monotonic time source. The engine's echo window reads it; tests drive it by hand.
class Clock {
public:
    virtual ~Clock() = default;
    virtual std::chrono::nanoseconds now() const = 0;
};

} // namespace orvan
