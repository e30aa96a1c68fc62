#include "Backdrop.h"

#include <QPainter>

namespace orvan {

namespace {
constexpr double kTopWhiteLevel = 0.045;
constexpr double kGlowRadius = 900;
const QColor kGlowColor = QColor::fromRgbF(0.35f, 0.40f, 0.55f, 0.28f);
} // namespace

void paintBackdrop(QPainter& painter, const QRectF& canvas)
{
    QLinearGradient fade(canvas.topLeft(), canvas.bottomLeft());
    fade.setColorAt(0, QColor::fromRgbF(kTopWhiteLevel, kTopWhiteLevel, kTopWhiteLevel));
    fade.setColorAt(1, Qt::black);
    painter.fillRect(canvas, fade);

    QRadialGradient glow(canvas.topRight(), kGlowRadius);
    glow.setColorAt(0, kGlowColor);
    glow.setColorAt(1, Qt::transparent);
    painter.fillRect(canvas, glow);
}

} // namespace orvan
