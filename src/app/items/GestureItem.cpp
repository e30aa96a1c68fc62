#include "GestureItem.h"

#include <QGraphicsSceneMouseEvent>
#include <QPainterPath>

namespace orvan {

GestureItem::GestureItem(QRectF hitRect, DragProfile profile, std::function<void(int)> onSteps, QGraphicsItem* parent)
    : QGraphicsObject(parent)
    , m_hitRect(hitRect)
    , m_onSteps(std::move(onSteps))
    , m_drag(profile, [this](int delta) { m_onSteps(delta); })
    , m_scroll([this](int steps) { m_onSteps(steps); })
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
}

QRectF GestureItem::boundingRect() const
{
    return m_hitRect.marginsAdded(paintMargins());
}

QPainterPath GestureItem::shape() const
{
    QPainterPath path;
    if (m_ellipse)
        path.addEllipse(m_hitRect);
    else
        path.addRect(m_hitRect);
    return path;
}

void GestureItem::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    // Travel is measured in the control's own coordinates, as the user sees it on the panel.
    m_drag.press(event->pos());
}

void GestureItem::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    m_drag.move(event->pos());
}

void GestureItem::mouseReleaseEvent(QGraphicsSceneMouseEvent*)
{
    // Only moves deliver steps: letting go ends the drag where the last move left it.
    if (!m_drag.release())
        activate();
}

void GestureItem::activate()
{
    if (m_onClick)
        m_onClick();
}

void GestureItem::hoverEnterEvent(QGraphicsSceneHoverEvent*)
{
    m_scroll.pointerEntered();
}

void GestureItem::hoverLeaveEvent(QGraphicsSceneHoverEvent*)
{
    m_scroll.pointerLeft();
}

} // namespace orvan
