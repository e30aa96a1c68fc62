#pragma once

#include "DragSteps.h"
#include "ScrollAdjust.h"

#include <QGraphicsObject>
#include <functional>
#include <optional>

namespace orvan {

/// A gain control that the user drags vertically or scrolls (a knob or a readout). Steps from both
/// go to `onSteps`. A press that never becomes a drag is a click, passed to `onClick` if set.
/// Subclasses paint the face inside the hit rectangle.
class GestureItem : public QGraphicsObject {
    Q_OBJECT

public:
    GestureItem(QRectF hitRect, DragProfile profile, std::function<void(int)> onSteps, QGraphicsItem* parent = nullptr);

    QRectF boundingRect() const override;
    QPainterPath shape() const override;

    void setOnClick(std::function<void()> onClick) { m_onClick = std::move(onClick); }
    void setShapeIsEllipse(bool ellipse) { m_ellipse = ellipse; }

    /// What a click does, for the keyboard and screen readers; nothing without `onClick`.
    bool hasClick() const { return bool(m_onClick); }
    void activate();
    /// Gain steps as a drag or scroll gives them.
    void step(int steps) { m_onSteps(steps); }

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent* event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent* event) override;

    virtual QMarginsF paintMargins() const { return {}; }

private:
    QRectF m_hitRect;
    std::function<void(int)> m_onSteps;
    std::function<void()> m_onClick;
    DragSteps m_drag;
    ScrollAdjust m_scroll;
    bool m_ellipse = false;
};

} // namespace orvan
