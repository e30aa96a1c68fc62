#include "BackdropItem.h"

#include <QPainter>

namespace orvan {

namespace {
constexpr double kTopWhiteLevel = 0.045;
constexpr double kGlowRadius = 900;
const QColor kGlowColor = QColor::fromRgbF(0.35f, 0.40f, 0.55f, 0.28f);
} // namespace

BackdropItem::BackdropItem(QSizeF size)
    : m_rect(QPointF(0, 0), size)
{
    setCacheMode(DeviceCoordinateCache); // never changes: painted once per size and scale
    setAcceptedMouseButtons(Qt::NoButton);
}

void BackdropItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    QLinearGradient fade(m_rect.topLeft(), m_rect.bottomLeft());
    fade.setColorAt(0, QColor::fromRgbF(kTopWhiteLevel, kTopWhiteLevel, kTopWhiteLevel));
    fade.setColorAt(1, Qt::black);
    painter->fillRect(m_rect, fade);

    QRadialGradient glow(m_rect.topRight(), kGlowRadius);
    glow.setColorAt(0, kGlowColor);
    glow.setColorAt(1, Qt::transparent);
    painter->fillRect(m_rect, glow);
}

} // namespace orvan
