#pragma once

#include <QRectF>

class QPainter;

namespace orvan::render {

/// The hard light from the upper right: three slanted streaks and a corner glow, added onto what
/// lies beneath (each channel saturating at white).
void paintHardLight(QPainter& painter, const QRectF& frame);

} // namespace orvan::render
