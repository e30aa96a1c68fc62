#pragma once

#include "Lettering.h"
#include "PushItem.h"
#include "Refreshable.h"

namespace orvan {

/// A lamp with its label, clickable as one row (a plain button: the whole row takes the click).
class LampRowItem final : public PushItem, public Refreshable {
    Q_OBJECT

public:
    struct Look {
        double lampSize;
        double gap;          ///< between lamp and label
        double labelWidth;   ///< the label's box; 0 for a lamp without label, kFitLabel for the label's own width
        QColor color;
        render::LetteringStyle labelStyle;
    };

    /// A label box as wide as the label itself (plus a point), measured when first needed.
    static constexpr double kFitLabel = -1;

    LampRowItem(Look look, QString label, std::function<bool()> isOn, std::function<void()> action,
                QGraphicsItem* parent = nullptr);

    bool isOn() const { return m_on; }
    bool refresh() override { return repaintIfChanged(*this, m_on, m_isOn && m_isOn()); }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

protected:
    QMarginsF paintMargins() const override;

private:
    static QSizeF rowSize(const Look& look, double labelWidth);
    double labelWidth() const;

    Look m_look; ///< labelWidth as given: it may be kFitLabel
    QString m_label;
    std::function<bool()> m_isOn;
    bool m_on = false;
};

} // namespace orvan
