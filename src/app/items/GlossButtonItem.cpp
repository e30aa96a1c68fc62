#include "GlossButtonItem.h"

#include "Controls.h"
#include "PressLook.h"
#include "panels/PaintingScene.h"

#include <QPainter>

namespace orvan {

GlossButtonItem::GlossButtonItem(QSizeF faceSize, std::function<void()> action, QGraphicsItem* parent)
    : PushItem(faceSize + QSizeF(kBezel, kBezel), std::move(action), parent)
{
    setCacheMode(DeviceCoordinateCache); // repainted only when its look changes
}

void GlossButtonItem::setLit(std::function<bool()> isLit)
{
    m_isLit = std::move(isLit);
    refresh();
}

void GlossButtonItem::setCaption(QString caption, render::LetteringStyle style)
{
    m_caption = std::move(caption);
    m_captionStyle = style;
    update();
}

QMarginsF GlossButtonItem::paintMargins() const
{
    // Bezel, hard shadow down-left, and the lit glow.
    return {10, 8, 8, 12};
}

void GlossButtonItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const QRectF face = buttonFace();
    {
        const PressLook press(*painter, boundingRect(), face.center(), isPressed());
        render::paintGlossButton(press.painter(), PaintingScene::cacheOf(*this), face, m_lit);
    }
    if (!m_caption.isEmpty())
        render::drawLettering(*painter, face, Qt::AlignCenter, m_caption, m_captionStyle);
}

} // namespace orvan
