#include "DragStripItem.h"

#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QWindow>

namespace orvan {

DragStripItem::DragStripItem(double width, double height)
    : m_rect(0, 0, width, height)
{
    setFlag(ItemHasNoContents);
    setAcceptedMouseButtons(Qt::LeftButton);
}

void DragStripItem::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    event->accept();
    // startSystemMove hands the move to the window system; it works on X11 and Wayland alike.
    if (QWidget* viewport = event->widget()) {
        if (QWindow* window = viewport->window()->windowHandle())
            window->startSystemMove();
    }
}

} // namespace orvan
