#pragma once

#include "items/PushItem.h"

namespace orvan {

class DemoMode;
class OrvanMIDI;

/// The pill at the bottom of the stage that switches demo mode. It is there only while no unit at
/// all is attached; while demo mode is on, a line beside it says that nothing is sent. Only the
/// pill takes clicks (a click, `activate`, switches demo mode); the line does not.
class DemoPillItem final : public PushItem {
    Q_OBJECT

public:
    DemoPillItem(QList<OrvanMIDI*> engines, DemoMode& demo, QGraphicsItem* parent = nullptr);

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

    static constexpr QSizeF kPillSize{108, 26};
    static constexpr double kExplanationOffset = 124;

signals:
    /// Demo mode was switched or the pill was shown or hidden.
    void lookChanged();

private:
    void refresh();
    bool anyHardware() const;

    QList<OrvanMIDI*> m_engines;
    DemoMode& m_demo;
};

} // namespace orvan
