#pragma once

#include "Lettering.h"
#include "Refreshable.h"

#include <QGraphicsItem>
#include <functional>

namespace orvan {

/// A blue text display set into the plate (status lines, preset name): a black bezel, a blue
/// gradient pane, and left-aligned monospaced lines in near-white.
class BlueDisplayItem final : public QGraphicsItem, public Refreshable {
public:
    struct Look {
        QSizeF bezel;
        double bezelRadius;
        QSizeF pane;
        double paneRadius;
        double textBoxWidth;
        double fontSize;
        bool glassHighlight; ///< the status display's hard light band
        bool blueGlow;       ///< the status display's glow
        double shadowDepth;
    };

    BlueDisplayItem(Look look, std::function<QStringList()> lines, QGraphicsItem* parent = nullptr);

    const QStringList& shownLines() const { return m_lines; }
    bool refresh() override { return repaintIfChanged(*this, m_lines, m_source()); }
    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

private:
    Look m_look;
    std::function<QStringList()> m_source;
    QStringList m_lines;
};

} // namespace orvan
