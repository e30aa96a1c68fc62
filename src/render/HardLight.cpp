#include "HardLight.h"

#include <QPainter>
#include <QPainterPath>

namespace orvan::render {

namespace {
struct Streak {
    double a, b, opacity;
};
constexpr Streak kStreaks[] = {{0.5, 0.66, 0.07}, {0.72, 0.8, 0.13}, {0.88, 0.915, 0.2}};
// Every streak edge moves 1.1 points left per point down, whatever the frame's proportions.
constexpr double kSlant = 1.1;
constexpr double kGlowOpacity = 0.38;
constexpr double kGlowReach = 0.32;
} // namespace

void paintHardLight(QPainter& painter, const QRectF& frame)
{
    const double w = frame.width(), h = frame.height();
    painter.save();
    painter.translate(frame.topLeft());
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    for (const Streak& s : kStreaks) {
        QPainterPath quad;
        quad.moveTo(w * s.a, 0);
        quad.lineTo(w * s.b, 0);
        quad.lineTo(w * s.b - kSlant * h, h);
        quad.lineTo(w * s.a - kSlant * h, h);
        quad.closeSubpath();
        QLinearGradient fade(0, 0, 0, h);
        fade.setColorAt(0, QColor::fromRgbF(1, 1, 1, float(s.opacity)));
        fade.setColorAt(1, QColor::fromRgbF(1, 1, 1, float(0.25 * s.opacity)));
        painter.fillPath(quad, fade);
    }
    QRadialGradient glow(QPointF(w, 0), kGlowReach * w);
    glow.setColorAt(0, QColor::fromRgbF(1, 1, 1, kGlowOpacity));
    glow.setColorAt(1, Qt::transparent);
    painter.fillRect(QRectF(0, 0, w, h), glow);
    painter.restore();
}

} // namespace orvan::render
