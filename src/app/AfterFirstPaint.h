#pragma once

#include <functional>

class QWidget;

namespace orvan {

/// Runs `task` once, on the main loop, right after `surface` has painted its first frame. For
/// work that must not delay what the user first sees: opening MIDI servers, the window icon.
void afterFirstPaint(QWidget& surface, std::function<void()> task);

} // namespace orvan
