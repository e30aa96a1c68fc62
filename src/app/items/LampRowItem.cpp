#include "LampRowItem.h"

#include "Controls.h"
#include "panels/PaintingScene.h"

#include <QPainter>

namespace orvan {

namespace {
constexpr double kRowHeightInLabelSizes = 1.4;
}

LampRowItem::LampRowItem(Look look, QString label, std::function<bool()> isOn, std::function<void()> action,
                         QGraphicsItem* parent)
    : PushItem([this] { return rowSize(m_look, labelWidth()); }, std::move(action), parent)
    , m_look(std::move(look))
    , m_label(std::move(label))
    , m_isOn(std::move(isOn))
{
    setCacheMode(DeviceCoordinateCache); // repainted only when its look changes
    m_on = m_isOn && m_isOn();
}

double LampRowItem::labelWidth() const
{
    return m_look.labelWidth == kFitLabel ? render::letteringWidth(m_label, m_look.labelStyle) + 1 : m_look.labelWidth;
}

QSizeF LampRowItem::rowSize(const Look& look, double labelWidth)
{
    const double width = look.lampSize + (labelWidth > 0 ? look.gap + labelWidth : 0);
    return {width, std::max(look.lampSize, look.labelStyle.size * kRowHeightInLabelSizes)};
}

QMarginsF LampRowItem::paintMargins() const
{
    return {6, 6, 6, 6}; // the lit lamp's glow
}

void LampRowItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const QRectF row = faceRect();
    const QPointF lampCentre(row.left() + m_look.lampSize / 2, row.center().y());
    render::paintLED(*painter, PaintingScene::cacheOf(*this), lampCentre, m_look.lampSize, m_on, m_look.color);
    if (m_look.labelWidth != 0) { // the label's box is what the row holds beside the lamp, measured once
        const double left = row.left() + m_look.lampSize + m_look.gap;
        const QRectF box(left, row.top(), row.right() - left, row.height());
        render::drawLettering(*painter, box, Qt::AlignLeft | Qt::AlignVCenter, m_label, m_look.labelStyle);
    }
}

} // namespace orvan
