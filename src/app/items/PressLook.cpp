#include "PressLook.h"

#include "Blur.h"
#include "Brightness.h"

#include <QPainter>
#include <cmath>

namespace orvan {

PressLook::PressLook(QPainter& painter, const QRectF& area, QPointF centre, bool pressed)
    : m_painter(painter)
    , m_area(area)
{
    if (!pressed)
        return;
    // Lowering each channel needs the finished pixels, which QPainter cannot read back: the face
    // is painted into its own layer at the device's resolution.
    const double scale = render::deviceScale(painter);
    m_layer = QImage(std::max(1, int(std::ceil(area.width() * scale))), std::max(1, int(std::ceil(area.height() * scale))),
                     QImage::Format_ARGB32_Premultiplied);
    m_layer.fill(Qt::transparent);
    m_layerSize = QSizeF(m_layer.size()) / scale;
    m_layerPainter = std::make_unique<QPainter>(&m_layer);
    m_layerPainter->setRenderHints(painter.renderHints());
    m_layerPainter->scale(scale, scale);
    m_layerPainter->translate(-area.topLeft());
    m_layerPainter->translate(centre);
    m_layerPainter->scale(kPressedScale, kPressedScale);
    m_layerPainter->translate(-centre);
}

PressLook::~PressLook()
{
    if (!m_layerPainter)
        return;
    m_layerPainter.reset();
    render::lowerBrightness(m_layer, kPressedDarkening);
    m_painter.drawImage(QRectF(m_area.topLeft(), m_layerSize), m_layer);
}

} // namespace orvan
