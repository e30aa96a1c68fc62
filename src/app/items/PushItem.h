#pragma once

#include <QGraphicsObject>
#include <functional>
#include <optional>

namespace orvan {

/// A push button on a panel: a click (press and release inside) runs the action once, and the face
/// shows the pressed look while the pointer holds it down. The whole rectangle takes the click,
/// transparent corners included. Subclasses paint the face.
class PushItem : public QGraphicsObject {
    Q_OBJECT

public:
    PushItem(QSizeF size, std::function<void()> action, QGraphicsItem* parent = nullptr);
    /// A face whose size is measured when first needed: measuring text loads the fonts, which a
    /// first frame from the cache folder does not need.
    PushItem(std::function<QSizeF()> measureSize, std::function<void()> action, QGraphicsItem* parent = nullptr);

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    QSizeF size() const;
    bool isPressed() const { return m_pressed; }
    /// Runs the button's action, as a click does (the keyboard and screen readers press this way).
    void activate();

    /// Where the face is drawn: centred on the item's origin.
    QRectF faceRect() const;

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;

    /// Room around the face for shadows and glows, so they are repainted with it.
    virtual QMarginsF paintMargins() const { return {}; }

private:
    void setPressed(bool pressed);

    mutable std::optional<QSizeF> m_size;
    std::function<QSizeF()> m_measureSize;
    std::function<void()> m_action;
    bool m_pressed = false;
};

} // namespace orvan
