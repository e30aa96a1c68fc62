#include "SevenSegment.h"

#include "Blur.h"
#include "Centred.h"
#include "Theme.h"

#include <QPainter>

namespace orvan::render {

QPainterPath Hex::path(const QRectF& r)
{
    QPainterPath p;
    const double w = r.width(), h = r.height();
    if (h > w) {
        const double s = w / 2;
        p.moveTo(r.center().x(), r.top());
        p.lineTo(r.right(), r.top() + s);
        p.lineTo(r.right(), r.bottom() - s);
        p.lineTo(r.center().x(), r.bottom());
        p.lineTo(r.left(), r.bottom() - s);
        p.lineTo(r.left(), r.top() + s);
    } else {
        const double s = h / 2;
        p.moveTo(r.left(), r.center().y());
        p.lineTo(r.left() + s, r.top());
        p.lineTo(r.right() - s, r.top());
        p.lineTo(r.right(), r.center().y());
        p.lineTo(r.right() - s, r.bottom());
        p.lineTo(r.left() + s, r.bottom());
    }
    p.closeSubpath();
    return p;
}

QSet<QChar> SevenSegmentDigit::forDigit(int digit)
{
    const QString& lit = digitSegments[std::size_t(digit)];
    return QSet<QChar>(lit.begin(), lit.end());
}

QRectF SevenSegmentDigit::segmentFrame(char segment) const
{
    const double W = width, H = height;
    const double t = 0.24 * W;
    const double L = W - 1.1 * t;
    const double V = H / 2 - 0.55 * t;
    QSizeF size;
    QPointF centre;
    switch (segment) {
    case 'a': size = {L, t}; centre = {W / 2, t / 2}; break;
    case 'g': size = {L, t}; centre = {W / 2, H / 2}; break;
    case 'd': size = {L, t}; centre = {W / 2, H - t / 2}; break;
    case 'f': size = {t, V}; centre = {t / 2, t / 2 + V / 2}; break;
    case 'b': size = {t, V}; centre = {W - t / 2, t / 2 + V / 2}; break;
    case 'e': size = {t, V}; centre = {t / 2, H - t / 2 - V / 2}; break;
    default: size = {t, V}; centre = {W - t / 2, H - t / 2 - V / 2}; break; // 'c'
    }
    return centredRect(centre, size);
}

QTransform SevenSegmentDigit::slant() const
{
    return QTransform(1, 0, -0.12, 1, 0.06 * height, 0);
}

QPainterPath SevenSegmentDigit::segmentPath(char segment) const
{
    return slant().map(Hex::path(segmentFrame(segment)));
}

void SevenSegmentDigit::paint(QPainter& painter, PaintCache* cache, QPointF topLeft) const
{
    painter.save();
    painter.translate(topLeft);
    QPainterPath lit;
    for (char s : kSegmentOrder) {
        if (segments.contains(QLatin1Char(s)))
            lit.addPath(segmentPath(s));
    }
    if (glow && !lit.isEmpty())
        paintGlow(painter, cache, lit, Theme::blueLit(), 1.0, 0.22 * width);
    for (char s : kSegmentOrder) {
        const bool on = segments.contains(QLatin1Char(s));
        if (!on && !showUnlit)
            continue;
        painter.fillPath(segmentPath(s), on ? kLitSegment : kUnlitSegment);
    }
    painter.restore();
}

} // namespace orvan::render
