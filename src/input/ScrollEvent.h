#pragma once

namespace orvan {

/// The three facts of a scroll event that gain controls use, independent of the toolkit.
struct ScrollEvent {
    double deltaY = 0;      ///< vertical distance: points when precise, lines otherwise
    bool precise = false;   ///< pixel-precise device (trackpad); a notched wheel counts lines
    bool inverted = false;  ///< natural scrolling has inverted the deltas
};

} // namespace orvan
