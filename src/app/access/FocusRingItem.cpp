#include "FocusRingItem.h"

#include "Theme.h"

#include <QPainter>

namespace orvan {

namespace {
constexpr double kCornerRadius = 4;
constexpr double kGlowOpacity = 0.35;
constexpr double kOnTop = 1e6;
} // namespace

FocusRingItem::FocusRingItem()
{
    setAcceptedMouseButtons(Qt::NoButton);
    setZValue(kOnTop);
    setVisible(false);
}

void FocusRingItem::ring(const QGraphicsItem* item, bool round)
{
    if (!item) {
        setVisible(false);
        return;
    }
    prepareGeometryChange();
    const QRectF outline = item->sceneTransform().map(item->shape()).boundingRect();
    m_ring = outline.adjusted(-kGap, -kGap, kGap, kGap);
    m_round = round;
    setVisible(true);
    update();
}

QRectF FocusRingItem::boundingRect() const
{
    const double reach = kGlowWidth;
    return m_ring.adjusted(-reach, -reach, reach, reach);
}

void FocusRingItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    QColor glow = render::Theme::blueLit();
    glow.setAlphaF(kGlowOpacity);
    for (const auto& [color, width] : {std::pair{glow, kGlowWidth}, std::pair{render::Theme::blueLit(), kLineWidth}}) {
        painter->setPen(QPen(color, width));
        if (m_round)
            painter->drawEllipse(m_ring);
        else
            painter->drawRoundedRect(m_ring, kCornerRadius, kCornerRadius);
    }
}

} // namespace orvan
