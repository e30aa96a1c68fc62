#pragma once

#include "Lettering.h"

#include <QGraphicsItem>
#include <optional>

namespace orvan {

/// One line of the stage's footer, standing on the canvas's bottom edge; takes no mouse input.
class FooterItem final : public QGraphicsItem {
public:
    FooterItem(QString text, Qt::Alignment side);

    /// The shared look of both footer lines.
    static render::LetteringStyle style();

    QString text() const { return m_text; }
    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

private:
    QString m_text;
    Qt::Alignment m_side;
    /// Measured once, when first asked: the view asks for the box on every frame.
    mutable std::optional<QRectF> m_box;
};

} // namespace orvan
