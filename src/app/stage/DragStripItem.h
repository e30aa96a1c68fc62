#pragma once

#include <QGraphicsItem>

namespace orvan {

/// The invisible strip along the top of the stage that moves the window; nothing else does.
class DragStripItem final : public QGraphicsItem {
public:
    explicit DragStripItem(double width, double height);

    QRectF boundingRect() const override { return m_rect; }
    void paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) override {}

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;

private:
    QRectF m_rect;
};

} // namespace orvan
