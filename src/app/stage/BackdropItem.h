#pragma once

#include <QGraphicsItem>

namespace orvan {

/// The dark stage behind the panels: a top-to-bottom fade with a cool glow from the top-right corner.
class BackdropItem final : public QGraphicsItem {
public:
    explicit BackdropItem(QSizeF size);
    QRectF boundingRect() const override { return m_rect; }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

private:
    QRectF m_rect;
};

} // namespace orvan
