#include "Blur.h"

#include "PaintCache.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <vector>

namespace orvan::render {

namespace {

/// Rounded division by the box's window, as a multiply: a division per channel and pixel was most
/// of a pass's time. Exact for every sum a window of 8-bit values can reach while
/// window² < 2^24, which holds for any blur this app asks for (windows of a few dozen pixels);
/// wider ones divide.
class WindowAverage {
public:
    explicit WindowAverage(int window)
        : m_window(quint32(window))
        , m_half(quint32(window / 2))
        , m_reciprocal(((quint64(1) << 32) + quint64(window) - 1) / quint64(window))
        , m_exact(window < 4096)
    {
    }
    quint32 operator()(quint32 sum) const
    {
        return m_exact ? quint32((quint64(sum + m_half) * m_reciprocal) >> 32) : (sum + m_half) / m_window;
    }

private:
    quint32 m_window, m_half;
    quint64 m_reciprocal;
    bool m_exact;
};

// One horizontal box pass of half-width r over rows of `Channels` 8-bit channels packed in a
// `Pixel` (premultiplied ARGB32, or the coverage alone for shadows: a quarter of the work), written
// transposed so that running it twice covers both directions with the same code.
template <typename Pixel, int Channels>
QImage boxPassTransposed(const QImage& src, int r)
{
    const int w = src.width(), h = src.height();
    QImage dst(h, w, src.format());
    // The bits and the stride once: scanLine() on a non-const image checks for a detach per call,
    // and this loop writes one pixel per call.
    uchar* const bits = dst.bits();
    const qsizetype stride = dst.bytesPerLine();
    const int window = 2 * r + 1;
    const WindowAverage average(window);
    std::vector<Pixel> row(std::size_t(w + 2 * r));
    const auto channel = [](Pixel p, int c) { return quint32(p >> (8 * c)) & 0xFF; };
    for (int y = 0; y < h; ++y) {
        const auto* in = reinterpret_cast<const Pixel*>(src.constScanLine(y));
        std::fill(row.begin(), row.end(), Pixel(0));
        std::copy(in, in + w, row.begin() + r);
        quint32 sum[Channels] = {};
        for (int i = 0; i < window - 1; ++i)
            for (int c = 0; c < Channels; ++c)
                sum[c] += channel(row[std::size_t(i)], c);
        for (int x = 0; x < w; ++x) {
            const Pixel entering = row[std::size_t(x + window - 1)];
            quint32 out = 0;
            for (int c = 0; c < Channels; ++c) {
                sum[c] += channel(entering, c);
                out |= average(sum[c]) << (8 * c);
            }
            reinterpret_cast<Pixel*>(bits + x * stride)[y] = Pixel(out);
            const Pixel leaving = row[std::size_t(x)];
            for (int c = 0; c < Channels; ++c)
                sum[c] -= channel(leaving, c);
        }
    }
    return dst;
}

/// Half-width of each of the box passes that together approximate a Gaussian of `radius`:
/// a box of half-width r has variance r(r + 1) / 3, and the passes' variances add up.
int boxHalfWidth(double radius, int passes)
{
    return std::max(1, int(std::lround((std::sqrt(12.0 * radius * radius / passes + 1) - 1) / 2)));
}

int passesFor(double radius)
{
    return radius < 2 ? 1 : 3; // below two pixels one box is as good as three
}

} // namespace

double deviceScale(const QPainter& painter)
{
    const QTransform t = painter.deviceTransform();
    return std::sqrt(std::abs(t.m11() * t.m22() - t.m12() * t.m21()));
}

double shadowLayerScale(double radius, double scale)
{
    // A wide blur loses nothing when computed on a coarser grid and scaled back up: keep the
    // radius near 4 pixels of the layer, which makes large glows cheap.
    constexpr double kLayerRadius = 4;
    return std::min(scale, kLayerRadius / radius);
}

int blurReach(double radius)
{
    if (radius < 0.5)
        return 0;
    const int passes = passesFor(radius);
    return passes * boxHalfWidth(radius, passes);
}

QImage blurred(const QImage& image, double radius)
{
    const bool alphaOnly = image.format() == QImage::Format_Alpha8;
    QImage out = alphaOnly ? image : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (radius < 0.5 || out.isNull())
        return out;
    const int passes = passesFor(radius);
    const int r = boxHalfWidth(radius, passes);
    for (int pass = 0; pass < passes; ++pass) {
        out = alphaOnly ? boxPassTransposed<quint8, 1>(boxPassTransposed<quint8, 1>(out, r), r)
                        : boxPassTransposed<quint32, 4>(boxPassTransposed<quint32, 4>(out, r), r);
    }
    return out;
}

namespace {

/// The blurred image of a shape depends only on the shape's outline (not where it stands), its
/// colour, the radius and the device scale: the panels' many identical lamps, buttons and screws
/// share one.
QByteArray shadowKey(const QPainterPath& shape, const QColor& color, double radius, double scale)
{
    const QRectF shapeBounds = shape.boundingRect();
    QByteArray key;
    key.reserve(64 + shape.elementCount() * 24);
    const auto append = [&key](auto value) { key.append(reinterpret_cast<const char*>(&value), sizeof value); };
    append(color.rgba64());
    append(radius);
    append(scale);
    for (int i = 0; i < shape.elementCount(); ++i) {
        const QPainterPath::Element e = shape.elementAt(i);
        append(int(e.type));
        append(e.x - shapeBounds.x());
        append(e.y - shapeBounds.y());
    }
    return key;
}

QImage makeShadowImage(const QPainterPath& shape, const QColor& color, double radius, double scale)
{
    const QRectF shapeBounds = shape.boundingRect();
    const double layerScale = shadowLayerScale(radius, scale);
    const double margin = radius * kShadowReach;
    const QRectF bounds(-margin, -margin, shapeBounds.width() + 2 * margin, shapeBounds.height() + 2 * margin);
    const QSize pixels(std::max(1, int(std::ceil(bounds.width() * layerScale))),
                       std::max(1, int(std::ceil(bounds.height() * layerScale))));
    // Blur the shape's coverage alone, then tint it: a shadow has one colour.
    QImage coverage(pixels, QImage::Format_Alpha8);
    coverage.fill(0);
    {
        QPainter p(&coverage);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(layerScale, layerScale);
        p.translate(-bounds.topLeft() - shapeBounds.topLeft());
        p.fillPath(shape, Qt::black);
    }
    QImage soft(pixels, QImage::Format_ARGB32_Premultiplied);
    soft.fill(color);
    {
        QPainter p(&soft);
        p.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        p.drawImage(0, 0, blurred(coverage, radius * layerScale));
    }
    return soft;
}

} // namespace

QImage shadowImage(PaintCache* cache, const QPainterPath& shape, const QColor& color, double radius, double scale)
{
    const auto make = [&] { return makeShadowImage(shape, color, radius, scale); };
    return cache ? cache->shadow(shadowKey(shape, color, radius, scale), make) : make();
}

void paintShadow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, const QColor& color, double radius, QPointF offset)
{
    if (color.alpha() == 0)
        return;
    if (radius <= 0) {
        painter.fillPath(shape.translated(offset), color);
        return;
    }
    const QImage soft = shadowImage(cache, shape, color, radius, deviceScale(painter));
    const double margin = radius * kShadowReach;
    const QRectF shapeBounds = shape.boundingRect();
    const QRectF target(shapeBounds.topLeft() + offset - QPointF(margin, margin),
                        shapeBounds.size() + QSizeF(2 * margin, 2 * margin));
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, soft);
    painter.restore();
}

ShadowLook hardShadowLook(double depth, double opacity)
{
    return {QColor::fromRgbF(0, 0, 0, float(opacity)), 0.35 * depth, QPointF(-depth, 1.1 * depth)};
}

ShadowLook glowLook(const QColor& color, double opacity, double radius)
{
    QColor c = color;
    c.setAlphaF(float(opacity * color.alphaF()));
    return {c, radius, QPointF(0, 0)};
}

void paintHardShadow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, double depth, double opacity)
{
    const ShadowLook look = hardShadowLook(depth, opacity);
    paintShadow(painter, cache, shape, look.color, look.radius, look.offset);
}

void paintGlow(QPainter& painter, PaintCache* cache, const QPainterPath& shape, const QColor& color, double opacity, double radius)
{
    const ShadowLook look = glowLook(color, opacity, radius);
    paintShadow(painter, cache, shape, look.color, look.radius, look.offset);
}

} // namespace orvan::render
