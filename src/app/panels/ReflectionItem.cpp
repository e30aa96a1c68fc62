#include "ReflectionItem.h"

#include "Blur.h"
#include "PanelItem.h"

#include <QGraphicsScene>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <cmath>

namespace orvan {

ReflectionItem::ReflectionItem(std::function<PanelItem*()> makeCopy, QSizeF plateSize, QGraphicsItem* parent)
    : QGraphicsObject(parent)
    , m_scene(std::make_unique<QGraphicsScene>())
    , m_copy(makeCopy())
    , m_plateSize(plateSize)
{
    m_scene->addItem(m_copy);
    setAcceptedMouseButtons(Qt::NoButton);
    setAcceptHoverEvents(false);
    setAcceptTouchEvents(false);
    connect(m_copy, &PanelItem::changed, this, &ReflectionItem::invalidate);
}

ReflectionItem::~ReflectionItem() = default;

QRectF ReflectionItem::boundingRect() const
{
    return {0, 0, m_plateSize.width(), kHeight};
}

void ReflectionItem::invalidate()
{
    if (m_dirty)
        return;
    m_dirty = true;
    update();
}

void ReflectionItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const double deviceScale = QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter->worldTransform())
        * painter->device()->devicePixelRatioF();
    if (m_dirty || deviceScale != m_imageScale)
        rebuild(deviceScale);
    painter->drawImage(boundingRect(), m_image);
}

void ReflectionItem::rebuild(double deviceScale)
{
    const double plateHeight = m_plateSize.height();
    const QSize pixels(int(std::ceil(m_plateSize.width() * deviceScale)), int(std::ceil(kHeight * deviceScale)));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter p(&image);
        p.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing);
        p.scale(deviceScale, deviceScale);
        // Mirror about the plate's lower edge: reflection row y shows plate row (height - y).
        p.translate(0, plateHeight);
        p.scale(1, -1);
        const QRectF source(0, plateHeight - kHeight, m_plateSize.width(), kHeight);
        m_scene->render(&p, source, source, Qt::IgnoreAspectRatio);
        p.end();

        // Fade: the panel padded by 3 points at its top was masked from clear at the top to 0.42
        // at the bottom before mirroring, so the reflection is strongest at its top edge.
        QPainter mask(&image);
        mask.scale(deviceScale, deviceScale);
        mask.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        const double padded = plateHeight + kTopPadding;
        QLinearGradient fade(0, 0, 0, padded);
        fade.setColorAt(0, QColor::fromRgbF(1, 1, 1, kMaskOpacity));
        fade.setColorAt(1, Qt::transparent);
        mask.fillRect(boundingRect(), fade);
    }
    m_image = render::blurred(image, kBlurRadius * deviceScale);
    m_image.setDevicePixelRatio(1);
    m_imageScale = deviceScale;
    m_dirty = false;
    ++m_renderCount;
}

} // namespace orvan
