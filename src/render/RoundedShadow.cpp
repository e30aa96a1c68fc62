#include "RoundedShadow.h"

#include "Blur.h"

#include <QPainter>
#include <QPainterPath>
#include <array>
#include <cmath>
#include <optional>

namespace orvan::render {

namespace {

/// One direction of the slicing. The whole shadow image `paintShadow` would draw (its pixels
/// "whole pixels") is never made: its near and far ends are cut from a small reference image
/// whose shape is shorter by a whole number of pixels, and its middle, where every line across
/// the side is the same, is one line of the reference stretched.
struct Axis {
    double length;     ///< the reference shape's length in points
    double deviceStart; ///< device coordinate of the whole image's first pixel edge
    double step;       ///< device pixels per whole pixel
    double wholePixels;
    int shift;         ///< whole pixels the far end lies beyond the reference's far end
    int nearSeam, farSeam; ///< device pixels where the pieces meet, inside the constant stretch
};

/// A straight side's profile reaches the middle once it is clear of the corner's curve, plus
/// what the blur spreads and a pixel for the smoothing that reads the neighbours.
std::optional<Axis> sliceAxis(double start, double length, double scale, double translation, double corner,
                              double margin, double layerScale, int reach)
{
    const double clear = corner * layerScale + reach + 1;
    const double shortest = 2 * corner + (2 * reach + 4) / layerScale;
    Axis axis{};
    axis.wholePixels = std::max(1.0, std::ceil((length + 2 * margin) * layerScale));
    axis.shift = int(std::floor((length - shortest) * layerScale));
    if (axis.shift < 0)
        return std::nullopt;
    axis.length = length - axis.shift / layerScale;
    axis.step = scale * (length + 2 * margin) / axis.wholePixels;
    axis.deviceStart = scale * (start - margin) + translation;
    axis.nearSeam = int(std::ceil(axis.deviceStart + (margin * layerScale + clear) * axis.step));
    axis.farSeam = int(std::floor(axis.deviceStart + ((margin + length) * layerScale - clear) * axis.step));
    if (axis.nearSeam >= axis.farSeam)
        return std::nullopt;
    return axis;
}

/// The three pieces along one axis, each a device span and the reference pixels it shows.
struct Span {
    double deviceFrom, deviceTo, sourceFrom, sourceTo;
};
std::array<Span, 3> spans(const Axis& axis, int referencePixels, double layerScale, double margin)
{
    const double middle = (margin + axis.length / 2) * layerScale;
    // The reference may round up to one more (clear) pixel than the whole image's far end.
    const double end = std::min(double(referencePixels), axis.wholePixels - axis.shift);
    const double near = axis.nearSeam, far = axis.farSeam;
    return {{
        {axis.deviceStart, near, 0, (near - axis.deviceStart) / axis.step},
        {near, far, middle - 1, middle + 1},
        {far, axis.deviceStart + (axis.shift + end) * axis.step, (far - axis.deviceStart) / axis.step - axis.shift, end},
    }};
}

} // namespace

void paintRoundedShadow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                        const QColor& color, double radius, QPointF offset)
{
    QPainterPath whole;
    whole.addRoundedRect(rect, cornerRadius, cornerRadius);
    const QTransform toDevice = painter.deviceTransform();
    // Pieces are laid in device pixels; a turned or mirrored painter gets the whole blur.
    if (color.alpha() == 0 || radius <= 0 || toDevice.type() > QTransform::TxScale || toDevice.m11() <= 0
        || toDevice.m22() <= 0) {
        paintShadow(painter, cache, whole, color, radius, offset);
        return;
    }
    const double scale = deviceScale(painter);
    const double layerScale = shadowLayerScale(radius, scale);
    const double margin = radius * kShadowReach;
    const int reach = blurReach(radius * layerScale);
    const QRectF shadow = rect.translated(offset);
    const auto across = sliceAxis(shadow.left(), shadow.width(), toDevice.m11(), toDevice.dx(), cornerRadius, margin,
                                  layerScale, reach);
    const auto down = sliceAxis(shadow.top(), shadow.height(), toDevice.m22(), toDevice.dy(), cornerRadius, margin,
                                layerScale, reach);
    if (!across || !down) {
        paintShadow(painter, cache, whole, color, radius, offset);
        return;
    }

    QPainterPath referenceShape;
    referenceShape.addRoundedRect(QRectF(0, 0, across->length, down->length), cornerRadius, cornerRadius);
    const QImage reference = shadowImage(cache, referenceShape, color, radius, scale);
    const auto columns = spans(*across, reference.width(), layerScale, margin);
    const auto rows = spans(*down, reference.height(), layerScale, margin);

    painter.save();
    painter.setWorldTransform(toDevice.inverted() * painter.worldTransform());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (const Span& row : rows) {
        for (const Span& column : columns) {
            painter.drawImage(QRectF(QPointF(column.deviceFrom, row.deviceFrom), QPointF(column.deviceTo, row.deviceTo)),
                              reference,
                              QRectF(QPointF(column.sourceFrom, row.sourceFrom), QPointF(column.sourceTo, row.sourceTo)));
        }
    }
    painter.restore();
}

void paintRoundedHardShadow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                            double depth, double opacity)
{
    paintRoundedShadow(painter, cache, rect, cornerRadius, QColor::fromRgbF(0, 0, 0, float(opacity)), 0.35 * depth,
                       QPointF(-depth, 1.1 * depth));
}

void paintRoundedGlow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                      const QColor& color, double opacity, double radius)
{
    QColor c = color;
    c.setAlphaF(float(opacity * color.alphaF()));
    paintRoundedShadow(painter, cache, rect, cornerRadius, c, radius, QPointF(0, 0));
}

} // namespace orvan::render
