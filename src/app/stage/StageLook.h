#pragma once

#include <QByteArray>

namespace orvan {

class OrvanRCUApp;

/// Everything the stage's look is a function of, written out as bytes: for each unit what its
/// engine reports (presence, connection, every channel) and what its model shows (selection,
/// presets, status lines, the knob, what waits for a confirmation), and the demo flag. Two
/// moments with the same description show the same window, so a frame painted at one of them
/// can stand for the other.
namespace StageLook {
QByteArray describe(const OrvanRCUApp& app);
}

} // namespace orvan
