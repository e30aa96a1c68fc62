#include "ReadoutItem.h"

#include "Centred.h"
#include "GainDisplay.h"
#include "panels/PaintingScene.h"

#include <QPainter>

namespace orvan {

ReadoutItem::ReadoutItem(Look look, DragProfile profile, std::function<std::optional<qint64>()> decibels,
                         std::function<bool()> isSelected, std::function<void(int)> onSteps, QGraphicsItem* parent)
    // The readout's whole 68 x 48 frame takes clicks and drags, however small it is drawn.
    : GestureItem(render::centredRect({}, render::GainDisplay::kSize), profile, std::move(onSteps), parent)
    , m_look(look)
    , m_decibels(std::move(decibels))
    , m_isSelected(std::move(isSelected))
{
    // Each readout is its own cached layer: a gain change repaints this one alone.
    setCacheMode(DeviceCoordinateCache);
    m_dB = m_decibels();
    m_selected = m_isSelected && m_isSelected();
}

bool ReadoutItem::refresh()
{
    const bool dBChanged = repaintIfChanged(*this, m_dB, m_decibels());
    const bool selectionChanged = repaintIfChanged(*this, m_selected, m_isSelected && m_isSelected());
    return dBChanged || selectionChanged;
}

QMarginsF ReadoutItem::paintMargins() const
{
    // Glow (radius 9), the hard shadow down-left and the "dB" legend outside the lower right,
    // around the glass drawn at its scale inside the frame.
    const double k = m_look.scale;
    const QSizeF inset = render::GainDisplay::kSize * (1 - k) / 2;
    return QMarginsF(16 * k - inset.width(), 14 * k - inset.height(), 20 * k - inset.width(), 22 * k - inset.height());
}

void ReadoutItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    painter->save();
    painter->scale(m_look.scale, m_look.scale);
    const render::GainDisplay display{.dB = m_dB, .selected = m_selected, .showUnlit = true,
                                      .labelColor = m_look.labelColor};
    render::paintGainDisplay(*painter, PaintingScene::cacheOf(*this), QPointF(0, 0), display);
    painter->restore();
}

} // namespace orvan
