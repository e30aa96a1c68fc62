#pragma once

#include "GestureItem.h"
#include "Refreshable.h"

namespace orvan {

/// The rotary gain knob: drag (8 points a step) or scroll; its pointer follows `angleDegrees`.
/// Panels that draw it smaller scale the whole item, so its drag is measured in knob points.
class KnobItem final : public GestureItem, public Refreshable {
    Q_OBJECT

public:
    static constexpr double kDiameter = 66;

    KnobItem(std::function<double()> angleDegrees, std::function<void(int)> onSteps, QGraphicsItem* parent = nullptr);

    bool refresh() override { return repaintIfChanged(*this, m_angle, m_angleDegrees()); }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

protected:
    QMarginsF paintMargins() const override { return {10, 4, 4, 12}; }

private:
    std::function<double()> m_angleDegrees;
    double m_angle = 0;
};

} // namespace orvan
