#pragma once

#include <QGraphicsItem>

namespace orvan::render {
class PaintCache;
}

namespace orvan {

class PanelItem;
class RCUModel;
class ReadoutItem;
class LampRowItem;
class GlossButtonItem;

/// One channel strip of the eight-channel panel: gain readout, switch lamp rows, SELECT button.
/// Its origin is the strip's centre line at the plate's top edge. The HEAD ROOM lamps and the
/// SELECT lettering never change and are painted with the plate (see paintStatic).
class ChannelColumn final : public QGraphicsItem {
public:
    ChannelColumn(RCUModel& model, int channel, QGraphicsItem* parent);

    /// The column's unchanging parts, painted into the plate's cached layer at the column's x.
    static void paintStatic(QPainter& painter, render::PaintCache* cache, double centreX);

    ReadoutItem* readout() const { return m_readout; }
    GlossButtonItem* selectButton() const { return m_select; }
    /// Rows in order: I/O, 48V, POL Ø, PAD, MUTE.
    const QList<LampRowItem*>& rows() const { return m_rows; }

    QRectF boundingRect() const override { return {}; }
    void paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) override {}

    /// Registers every dynamic part of the column with the panel.
    void followWith(PanelItem& panel) const;

private:
    ReadoutItem* m_readout;
    QList<LampRowItem*> m_rows;
    GlossButtonItem* m_select;
};

} // namespace orvan
