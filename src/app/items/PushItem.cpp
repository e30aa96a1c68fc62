#include "PushItem.h"

#include "Centred.h"

#include <QGraphicsSceneMouseEvent>
#include <QPainterPath>

namespace orvan {

PushItem::PushItem(QSizeF size, std::function<void()> action, QGraphicsItem* parent)
    : PushItem([size] { return size; }, std::move(action), parent)
{
}

PushItem::PushItem(std::function<QSizeF()> measureSize, std::function<void()> action, QGraphicsItem* parent)
    : QGraphicsObject(parent)
    , m_measureSize(std::move(measureSize))
    , m_action(std::move(action))
{
    setAcceptedMouseButtons(Qt::LeftButton);
}

QSizeF PushItem::size() const
{
    if (!m_size)
        m_size = m_measureSize();
    return *m_size;
}

QRectF PushItem::faceRect() const
{
    return render::centredRect({}, size());
}

QRectF PushItem::boundingRect() const
{
    return faceRect().marginsAdded(paintMargins());
}

QPainterPath PushItem::shape() const
{
    QPainterPath path;
    path.addRect(faceRect());
    return path;
}

void PushItem::mousePressEvent(QGraphicsSceneMouseEvent*)
{
    setPressed(true);
}

void PushItem::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    setPressed(faceRect().contains(event->pos()));
}

void PushItem::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    const bool clicked = m_pressed && faceRect().contains(event->pos());
    setPressed(false);
    if (clicked)
        activate();
}

void PushItem::activate()
{
    if (m_action)
        m_action();
}

void PushItem::setPressed(bool pressed)
{
    if (pressed == m_pressed)
        return;
    m_pressed = pressed;
    update();
}

} // namespace orvan
