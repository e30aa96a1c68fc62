#pragma once

#include "Lettering.h"
#include "PushItem.h"
#include "Refreshable.h"

namespace orvan {

/// A glossy push button of a panel, optionally with a caption centred on it and a blue lit ring.
class GlossButtonItem final : public PushItem, public Refreshable {
    Q_OBJECT

public:
    /// `faceSize` is the button's face; the bezel around it adds 5 points, and all of that takes
    /// the click.
    GlossButtonItem(QSizeF faceSize, std::function<void()> action, QGraphicsItem* parent = nullptr);

    static constexpr double kBezel = 5;

    void setLit(std::function<bool()> isLit);
    void setCaption(QString caption, render::LetteringStyle style);
    bool isLit() const { return m_lit; }
    QRectF buttonFace() const { return faceRect().adjusted(kBezel / 2, kBezel / 2, -kBezel / 2, -kBezel / 2); }

    bool refresh() override { return repaintIfChanged(*this, m_lit, m_isLit && m_isLit()); }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) override;

protected:
    QMarginsF paintMargins() const override;

private:
    std::function<bool()> m_isLit;
    bool m_lit = false;
    QString m_caption;
    render::LetteringStyle m_captionStyle;
};

} // namespace orvan
