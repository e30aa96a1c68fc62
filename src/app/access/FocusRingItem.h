#pragma once

#include <QGraphicsItem>

namespace orvan {

/// The keyboard focus ring, drawn over the focused control in the panels' own look: the blue of a
/// lit button, as a thin bright line inside a soft glow, following the control's outline (round
/// for a knob). It takes no input and is hidden while no control has keyboard focus.
class FocusRingItem final : public QGraphicsItem {
public:
    FocusRingItem();

    /// Rings `item` (a round ring when `round`); nullptr hides the ring.
    void ring(const QGraphicsItem* item, bool round);

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

    static constexpr double kGap = 3;       ///< between the control's outline and the ring
    static constexpr double kLineWidth = 1.6;
    static constexpr double kGlowWidth = 5;

private:
    QRectF m_ring; ///< scene coordinates
    bool m_round = false;
};

} // namespace orvan
