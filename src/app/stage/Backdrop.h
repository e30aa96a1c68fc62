#pragma once

class QPainter;
class QRectF;

namespace orvan {

/// The dark stage behind the panels: a top-to-bottom fade with a cool glow from the top-right
/// corner. Opaque: nothing behind it is ever drawn.
void paintBackdrop(QPainter& painter, const QRectF& canvas);

} // namespace orvan
