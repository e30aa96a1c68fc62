#include "BrushedTexture.h"

#include "Blur.h"
#include "PaintCache.h"
#include "SplitMix64.h"

#include <QPainter>
#include <cmath>

namespace orvan::render {

void BrushedTexture::draw(QPainter& painter, QSizeF size) const
{
    const double w = size.width(), h = size.height();
    SplitMix64 rng(kSeed);
    painter.save();
    painter.setClipRect(QRectF(0, 0, w, h), Qt::IntersectClip);
    painter.setPen(Qt::NoPen);

    // Sheen: one draw per column (vertical grain) or per row, in order.
    if (vertical) {
        for (double x = 0; x < w; x += 1)
            painter.fillRect(QRectF(x, 0, 1, h), QColor::fromRgbF(1, 1, 1, float(rng.uniform(0, 0.07))));
    } else {
        for (double y = 0; y < h; y += 1)
            painter.fillRect(QRectF(0, y, w, 1), QColor::fromRgbF(1, 1, 1, float(rng.uniform(0, 0.05))));
    }

    // Scratches may start 50 points before the start edge, so the grain runs in from outside.
    const int count = vertical ? kVerticalScratches : kHorizontalScratches;
    for (int i = 0; i < count; ++i) {
        const double y = vertical ? rng.uniform(-50, h) : rng.uniform(0, h);
        const double x = vertical ? rng.uniform(0, w) : rng.uniform(-50, w);
        const double length = rng.uniform(40, 380);
        const bool white = rng.drawWhite();
        const double opacity = rng.uniform(0.02, 0.07);
        const QColor color = white ? QColor::fromRgbF(1, 1, 1, float(opacity)) : QColor::fromRgbF(0, 0, 0, float(opacity));
        painter.setPen(QPen(color, 0.6));
        if (vertical)
            painter.drawLine(QPointF(x, y), QPointF(x, y + length));
        else
            painter.drawLine(QPointF(x, y), QPointF(x + length, y));
    }
    painter.restore();
}

namespace {
/// The texture's image for a frame size at a device scale.
QImage brushedTextureImage(QSizeF size, bool vertical, double deviceScale)
{
    const QSize pixels(std::max(1, int(std::ceil(size.width() * deviceScale))),
                       std::max(1, int(std::ceil(size.height() * deviceScale))));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(deviceScale, deviceScale);
    BrushedTexture{vertical}.draw(p, size);
    return image;
}
} // namespace

void paintBrushedTexture(QPainter& painter, PaintCache* cache, const QRectF& rect, bool vertical)
{
    const double scale = deviceScale(painter);
    const auto make = [&] { return brushedTextureImage(rect.size(), vertical, scale); };
    if (!cache) {
        painter.drawImage(rect, make());
        return;
    }
    const QByteArray key = QStringLiteral("%1x%2:%3@%4").arg(rect.width()).arg(rect.height()).arg(vertical).arg(scale).toLatin1();
    painter.drawImage(rect, cache->grain(key, make));
}

} // namespace orvan::render
