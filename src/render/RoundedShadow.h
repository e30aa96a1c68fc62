#pragma once

#include <QColor>
#include <QPointF>
#include <QRectF>

class QPainter;

namespace orvan::render {

class PaintCache;

/// Paints the shadow of the rounded rectangle `rect` (corner radius `cornerRadius`) exactly as
/// `paintShadow` paints it for the same outline, but from nine pieces of a small blurred rounded
/// rectangle with the same corners: a blur is constant along each straight side once it is clear
/// of the corners, so corners, edge strips and a flat middle give the whole shadow. The pieces are
/// kept in `cache`; a rectangle too small to have a flat middle, or a painter that turns, gets
/// the whole-shape blur. `hiddenBy` is an area the caller paints over with opaque
/// colour next (a plate over its own shadow): the flat middle is not laid there.
void paintRoundedShadow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                        const QColor& color, double radius, QPointF offset, const QRectF& hiddenBy = QRectF());

/// `paintHardShadow` of a rounded rectangle, from pieces.
void paintRoundedHardShadow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                            double depth, double opacity);

/// `paintGlow` of a rounded rectangle, from pieces.
void paintRoundedGlow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                      const QColor& color, double opacity, double radius);

} // namespace orvan::render
