#pragma once

#include "GestureItem.h"
#include "Refreshable.h"

#include <QColor>
#include <optional>

namespace orvan {

/// A channel's blue seven-segment gain readout, drawn at `scale`, dragged or scrolled for gain.
class ReadoutItem final : public GestureItem, public Refreshable {
    Q_OBJECT

public:
    struct Look {
        double scale = 1;
        QColor labelColor;
    };

    ReadoutItem(Look look, DragProfile profile, std::function<std::optional<qint64>()> decibels,
                std::function<bool()> isSelected, std::function<void(int)> onSteps, QGraphicsItem* parent = nullptr);

    std::optional<qint64> shownDecibels() const { return m_dB; }
    bool isShownSelected() const { return m_selected; }

    bool refresh() override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

protected:
    QMarginsF paintMargins() const override;

private:
    Look m_look;
    std::function<std::optional<qint64>()> m_decibels;
    std::function<bool()> m_isSelected;
    std::optional<qint64> m_dB;
    bool m_selected = false;
};

} // namespace orvan
