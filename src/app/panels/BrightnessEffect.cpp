#include "BrightnessEffect.h"

#include "Brightness.h"

#include <QPainter>

namespace orvan {

BrightnessEffect::BrightnessEffect(double lowering, double opacity, QObject* parent)
    : QGraphicsEffect(parent)
    , m_lowering(lowering)
    , m_opacity(opacity)
{
}

void BrightnessEffect::draw(QPainter* painter)
{
    // Worked on device pixels, so the result is laid down without resampling.
    QPoint offset;
    const QPixmap source = sourcePixmap(Qt::DeviceCoordinates, &offset, QGraphicsEffect::PadToEffectiveBoundingRect);
    if (source.isNull())
        return;
    QImage image = source.toImage();
    render::lowerBrightness(image, m_lowering);
    painter->save();
    painter->setWorldTransform(QTransform());
    painter->setOpacity(painter->opacity() * m_opacity);
    painter->drawImage(offset, image);
    painter->restore();
}

} // namespace orvan
