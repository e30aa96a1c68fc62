#include "ReflectionItem.h"

#include "Blur.h"
#include "PaintingScene.h"
#include "PanelItem.h"

#include <QGraphicsScene>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <cmath>

namespace orvan {

ReflectionItem::ReflectionItem(std::function<PanelItem*()> makeCopy, QSizeF plateSize, QGraphicsItem* parent)
    : QGraphicsObject(parent)
    , m_scene(std::make_unique<PaintingScene>())
    , m_copy(makeCopy())
    , m_plateSize(plateSize)
{
    m_scene->addItem(m_copy);
    m_copy->setPlateSeenFrom(plateSize.height() - kHeight);
    // The copy is only ever painted once per change, mirrored and blurred: a pixmap per control
    // would be made, drawn once and kept for nothing.
    std::function<void(QGraphicsItem*)> uncache = [&uncache](QGraphicsItem* item) {
        item->setCacheMode(NoCache);
        for (QGraphicsItem* child : item->childItems())
            uncache(child);
    };
    uncache(m_copy);
    setAcceptedMouseButtons(Qt::NoButton);
    // Kept aligned to device pixels, so a frame copies it instead of resampling it.
    setCacheMode(DeviceCoordinateCache);
    connect(m_copy, &PanelItem::changed, this, &ReflectionItem::invalidate);
    m_dirty = boundingRect();
}

ReflectionItem::~ReflectionItem() = default;

QRectF ReflectionItem::boundingRect() const
{
    return {0, 0, m_plateSize.width(), kHeight};
}

QRectF ReflectionItem::mirroredArea(const QRectF& panelArea) const
{
    // Reflection row y shows plate row (height - y); blur spreads a change by a point or two.
    const double h = m_plateSize.height();
    const QRectF mirrored(panelArea.left(), h - panelArea.bottom(), panelArea.width(), panelArea.height());
    return mirrored.adjusted(-2, -2, 2, 2) & boundingRect();
}

void ReflectionItem::invalidate(const QRectF& panelArea)
{
    const QRectF area = mirroredArea(panelArea);
    if (area.isEmpty())
        return;
    m_dirty |= area;
    update(area);
}

void ReflectionItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const double deviceScale = QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter->worldTransform())
        * painter->device()->devicePixelRatioF();
    if (deviceScale != m_imageScale)
        m_dirty = boundingRect();
    if (auto* stage = dynamic_cast<PaintingScene*>(scene()))
        m_scene->shareCacheWith(*stage);
    if (!m_dirty.isEmpty())
        rebuild(deviceScale);
    painter->drawImage(boundingRect(), m_image);
}

void ReflectionItem::rebuild(double deviceScale)
{
    const double plateHeight = m_plateSize.height();
    if (deviceScale != m_imageScale || m_image.isNull()) {
        const QSize pixels(int(std::ceil(m_plateSize.width() * deviceScale)), int(std::ceil(kHeight * deviceScale)));
        m_image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        m_imageScale = deviceScale;
        m_dirty = boundingRect();
    }
    // Work on whole pixels, with room for the blur to read its neighbours.
    const QRect pixels = QRectF(m_dirty.topLeft() * deviceScale, m_dirty.size() * deviceScale)
                             .toAlignedRect()
                             .intersected(m_image.rect());
    const int blurMargin = int(std::ceil(kBlurRadius * deviceScale * 3)) + 1;
    const QRect work = pixels.adjusted(-blurMargin, -blurMargin, blurMargin, blurMargin).intersected(m_image.rect());

    QImage part(work.size(), QImage::Format_ARGB32_Premultiplied);
    part.fill(Qt::transparent);
    {
        QPainter p(&part);
        p.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing);
        p.translate(-work.topLeft());
        p.scale(deviceScale, deviceScale);
        // Mirror about the plate's lower edge: reflection row y shows plate row (height - y).
        p.translate(0, plateHeight);
        p.scale(1, -1);
        const QRectF source(0, plateHeight - kHeight, m_plateSize.width(), kHeight);
        m_scene->render(&p, source, source, Qt::IgnoreAspectRatio);
        p.end();

        // Fade: the panel padded by 3 points at its top was masked from clear at the top to 0.42
        // at the bottom before mirroring, so the reflection is strongest at its top edge.
        QPainter mask(&part);
        mask.translate(-work.topLeft());
        mask.scale(deviceScale, deviceScale);
        mask.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        QLinearGradient fade(0, 0, 0, plateHeight + kTopPadding);
        fade.setColorAt(0, QColor::fromRgbF(1, 1, 1, kMaskOpacity));
        fade.setColorAt(1, Qt::transparent);
        mask.fillRect(boundingRect(), fade);
    }
    const QImage soft = render::blurred(part, kBlurRadius * deviceScale);
    QPainter out(&m_image);
    out.setCompositionMode(QPainter::CompositionMode_Source);
    out.drawImage(pixels.topLeft(), soft, pixels.translated(-work.topLeft()));
    out.end();

    m_dirty = QRectF();
    ++m_renderCount;
}

} // namespace orvan
