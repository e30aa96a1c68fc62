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

/// How many pixels `blurred` spreads a pixel by, at most, for `radius`: beyond that a pixel
/// sees nothing of another.
int blurReach(double radius);

/// How far a shadow's blurred image reaches beyond its shape, in blur radii.
constexpr double kShadowReach = 3;

/// The scale of a painter's device (its pixels per point).
double deviceScale(const QPainter& painter);

/// Pixels per point of the image a blur of `radius` points is computed on, at device scale
/// `scale`: wide blurs are computed coarser and scaled up.
double shadowLayerScale(double radius, double scale);

/// The blurred image of `shape` filled in `color`, for a device of scale `scale`: the shape's
/// bounds grown by `kShadowReach` x `radius` on every side, at `shadowLayerScale` pixels per
/// point. Kept in `cache` when given.
QImage shadowImage(PaintCache* cache, const QPainterPath& shape, const QColor& color, double radius, double scale);

/// Paints the shadow a shape casts: the shape filled in `color`, blurred by `radius` points and
/// moved by `offset`. Drawn at the painter's device scale, so it stays crisp at any ratio; the
/// blurred image is kept in `cache` (when given) for every later shadow of the same outline.
void paintShadow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, const QColor& color, double radius, QPointF offset);

/// A shadow's colour, blur and offset: what `paintShadow` and `paintRoundedShadow` take.
struct ShadowLook {
    QColor color;
    double radius;
    QPointF offset;
};

/// The shared hard shadow: black at `opacity`, blurred 0.35 x depth, moved (-depth, +1.1 x depth).
ShadowLook hardShadowLook(double depth, double opacity);

/// A glow: `color` at `opacity` of its own alpha, blurred by `radius`, not moved.
ShadowLook glowLook(const QColor& color, double opacity, double radius);

/// Paints the hard shadow (`hardShadowLook`) a shape casts.
void paintHardShadow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, double depth, double opacity);

/// Paints a glow (`glowLook`) around a shape.
void paintGlow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, const QColor& color, double opacity, double radius);

} // namespace orvan::render
