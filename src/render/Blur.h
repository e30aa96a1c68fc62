#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>

class QPainter;
class QPainterPath;

namespace orvan::render {

class PaintCache;

/// A Gaussian-like blur (three box passes) of a premultiplied image; `radius` in pixels.
QImage blurred(const QImage& image, double radius);

/// Paints the shadow a shape casts: the shape filled in `color`, blurred by `radius` points and
/// moved by `offset`. Drawn at the painter's device scale, so it stays crisp at any ratio; the
/// blurred image is kept in `cache` (when given) for every later shadow of the same outline.
void paintShadow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, const QColor& color, double radius, QPointF offset);

/// The shared hard shadow: black at `opacity`, blurred 0.35 x depth, moved (-depth, +1.1 x depth).
void paintHardShadow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, double depth, double opacity);

/// A glow around a shape: its shadow in `color` at `opacity`, blurred by `radius`, not moved.
void paintGlow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, const QColor& color, double opacity, double radius);

} // namespace orvan::render
