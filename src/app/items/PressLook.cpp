#include "PressLook.h"

#include <QPainter>
#include <QPainterPath>

namespace orvan {

PressLook::PressLook(QPainter& painter, QPointF centre, bool pressed)
    : m_painter(painter)
    , m_pressed(pressed)
{
    m_painter.save();
    if (m_pressed) {
        m_painter.translate(centre);
        m_painter.scale(kPressedScale, kPressedScale);
        m_painter.translate(-centre);
    }
}

PressLook::~PressLook()
{
    m_painter.restore();
}

void PressLook::darken(const QPainterPath& face) const
{
    if (!m_pressed)
        return;
    // Lowering every channel by a fixed amount is close to laying black at that opacity over the
    // face, which QPainter can do without reading pixels back.
    m_painter.fillPath(face, QColor::fromRgbF(0, 0, 0, kPressedDarkening));
}

} // namespace orvan
