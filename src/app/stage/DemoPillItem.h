#pragma once

#include <QGraphicsObject>

namespace orvan {

class DemoMode;
class OrvanMIDI;

/// The pill at the bottom of the stage that switches demo mode. It is there only while no unit at
/// all is attached; while demo mode is on, a line beside it says that nothing is sent.
class DemoPillItem final : public QGraphicsObject {
    Q_OBJECT

public:
    DemoPillItem(QList<OrvanMIDI*> engines, DemoMode& demo, QGraphicsItem* parent = nullptr);

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

    /// Switches demo mode, as a click does.
    void activate();

    static constexpr QSizeF kPillSize{108, 26};
    static constexpr double kExplanationOffset = 124;

signals:
    /// Demo mode was switched or the pill was shown or hidden.
    void lookChanged();

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;

private:
    void refresh();
    bool anyHardware() const;

    QList<OrvanMIDI*> m_engines;
    DemoMode& m_demo;
    bool m_pressed = false;
};

} // namespace orvan
