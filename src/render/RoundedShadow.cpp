#include "RoundedShadow.h"

#include "Blur.h"

#include <QPainter>
#include <QPainterPath>
#include <QRegion>
#include <array>
#include <cmath>
#include <optional>
#include <tuple>

namespace orvan::render {

namespace {

/// One direction of the slicing. The whole shadow image `paintShadow` would draw (its pixels
/// "whole pixels") is never made. Its near end is a small reference image with the same corner,
/// drawn where the whole image would be; its far end is the same reference drawn a whole number
/// of pixels further on (its shape is that much shorter); in between, where every line across the
/// side is the same, one line is repeated.
struct Axis {
    double length;        ///< the reference shape's length in points
    double boundStart;    ///< where the whole image starts, in points
    double pointsPerPixel; ///< points per whole pixel
    int shift;            ///< whole pixels between the reference's far end and the whole one's
    int line;             ///< a device pixel inside the stretch where every line is the same
    /// The three pieces in device order: first and last device pixel (exclusive), which end of
    /// the axis the reference is placed for, and whether the piece repeats one line.
    std::array<std::tuple<int, int, int, bool>, 3> pieces;
};

/// A straight side's profile is the same everywhere once clear of the corner's curve, plus what
/// the blur spreads and a pixel for the smoothing that reads the neighbours. `scale` is negative
/// along a mirrored axis (a reflection), which lays the far end first.
std::optional<Axis> sliceAxis(double start, double length, double scale, double translation, double corner,
                              double margin, double layerScale, int reach)
{
    const double clear = corner * layerScale + reach + 1;
    const double shortest = 2 * corner + (2 * reach + 4) / layerScale;
    const double wholePixels = std::max(1.0, std::ceil((length + 2 * margin) * layerScale));
    Axis axis{};
    axis.shift = int(std::floor((length - shortest) * layerScale));
    if (axis.shift < 0)
        return std::nullopt;
    axis.length = length - axis.shift / layerScale;
    axis.boundStart = start - margin;
    axis.pointsPerPixel = (length + 2 * margin) / wholePixels;
    const double deviceStart = scale * axis.boundStart + translation;
    const double step = scale * axis.pointsPerPixel; // device pixels per whole pixel
    const double nearEdge = deviceStart, farEdge = deviceStart + wholePixels * step;
    const double nearClear = deviceStart + (margin * layerScale + clear) * step;
    const double farClear = deviceStart + ((margin + length) * layerScale - clear) * step;
    axis.line = int(std::floor(deviceStart + (margin + axis.length / 2) * layerScale * step));
    // Seams are rounded into the stretch where every line is the same.
    if (step > 0) {
        const int nearSeam = int(std::ceil(nearClear)), farSeam = int(std::floor(farClear));
        axis.pieces = {{{int(std::floor(nearEdge)) - 1, nearSeam, 0, false},
                        {nearSeam, farSeam, 0, true},
                        {farSeam, int(std::ceil(farEdge)) + 1, 1, false}}};
    } else {
        const int farSeam = int(std::ceil(farClear)), nearSeam = int(std::floor(nearClear));
        axis.pieces = {{{int(std::floor(farEdge)) - 1, farSeam, 1, false},
                        {farSeam, nearSeam, 0, true},
                        {nearSeam, int(std::ceil(nearEdge)) + 1, 0, false}}};
    }
    if (std::get<0>(axis.pieces[1]) >= std::get<1>(axis.pieces[1]))
        return std::nullopt;
    return axis;
}

/// Where the reference lies, in points, for the near end (0) or the far end (1) of an axis.
std::pair<double, double> placed(const Axis& axis, int end, int referencePixels)
{
    return {axis.boundStart + end * axis.shift * axis.pointsPerPixel, referencePixels * axis.pointsPerPixel};
}

} // namespace

void paintRoundedShadow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                        const QColor& color, double radius, QPointF offset, const QRectF& hiddenBy)
{
    QPainterPath whole;
    whole.addRoundedRect(rect, cornerRadius, cornerRadius);
    const QTransform toDevice = painter.deviceTransform();
    // Pieces meet at device pixels; a turned painter gets the whole blur.
    if (color.alpha() == 0 || radius <= 0 || toDevice.type() > QTransform::TxScale) {
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

    // Each piece draws the reference exactly as paintShadow draws its whole image (same painter
    // transform, same smoothing), so their pixels agree; a piece only chooses where.
    const auto drawReference = [&](QPainter& p, int endAcross, int endDown) {
        const auto [x, width] = placed(*across, endAcross, reference.width());
        const auto [y, height] = placed(*down, endDown, reference.height());
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(QRectF(x, y, width, height), reference);
    };
    const QTransform world = painter.worldTransform();
    const QTransform worldToDevice = world.inverted() * toDevice;
    // The whole device pixels that opaque paint will cover (those its smoothed edge cuts excepted).
    const QRectF hiddenPixels = toDevice.mapRect(hiddenBy);
    const QRect hidden(QPoint(int(std::ceil(hiddenPixels.left())) + 1, int(std::ceil(hiddenPixels.top())) + 1),
                       QPoint(int(std::floor(hiddenPixels.right())) - 2, int(std::floor(hiddenPixels.bottom())) - 2));
    for (const auto& [top, bottom, endDown, flatDown] : down->pieces) {
        for (const auto& [left, right, endAcross, flatAcross] : across->pieces) {
            const QRect piece(QPoint(left, top), QPoint(right - 1, bottom - 1));
            painter.save();
            painter.setWorldTransform(worldToDevice.inverted()); // device pixels
            if (!flatAcross && !flatDown) {
                // A corner: the reference itself, cut at the seams.
                painter.setClipRect(piece, Qt::IntersectClip);
                painter.setWorldTransform(world);
                drawReference(painter, endAcross, endDown);
            } else {
                // Along a side: one line of pixels (one pixel in the middle) as the reference shows
                // it there, repeated without smoothing, since a smooth stretch of the reference over
                // a plate's length costs more than the blur the pieces save. Laying a plate's flat
                // middle costs as much again; it is skipped where the caller covers it anyway.
                const QRegion shown = flatAcross && flatDown && !hidden.isEmpty() ? QRegion(piece).subtracted(hidden)
                                                                                  : QRegion(piece);
                if (!shown.isEmpty()) {
                    const QPoint origin(flatAcross ? across->line : left, flatDown ? down->line : top);
                    QImage line(flatAcross ? 1 : piece.width(), flatDown ? 1 : piece.height(),
                                QImage::Format_ARGB32_Premultiplied);
                    line.fill(Qt::transparent);
                    QPainter p(&line);
                    p.setRenderHints(painter.renderHints());
                    p.setCompositionMode(QPainter::CompositionMode_Source);
                    p.setWorldTransform(toDevice * QTransform::fromTranslate(-origin.x(), -origin.y()));
                    drawReference(p, endAcross, endDown);
                    p.end();
                    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
                    for (const QRect& part : shown)
                        painter.drawImage(part, line);
                }
            }
            painter.restore();
        }
    }
}

void paintRoundedHardShadow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                            double depth, double opacity)
{
    const ShadowLook look = hardShadowLook(depth, opacity);
    paintRoundedShadow(painter, cache, rect, cornerRadius, look.color, look.radius, look.offset);
}

void paintRoundedGlow(QPainter& painter, PaintCache* cache, const QRectF& rect, double cornerRadius,
                      const QColor& color, double opacity, double radius)
{
    const ShadowLook look = glowLook(color, opacity, radius);
    paintRoundedShadow(painter, cache, rect, cornerRadius, look.color, look.radius, look.offset);
}

} // namespace orvan::render
