#include "KnobItem.h"

#include "Controls.h"
#include "panels/PaintingScene.h"

#include <QPainter>
#include <QtMath>

namespace orvan {

KnobItem::KnobItem(std::function<double()> angleDegrees, std::function<void(int)> onSteps, QGraphicsItem* parent)
    : GestureItem(QRectF(-kDiameter / 2, -kDiameter / 2, kDiameter, kDiameter), DragProfiles::knob, std::move(onSteps),
                  parent)
    , m_angleDegrees(std::move(angleDegrees))
{
    setShapeIsEllipse(true); // a press anywhere on the 66-point disc starts the drag
    setCacheMode(DeviceCoordinateCache);
    m_angle = m_angleDegrees();
}

void KnobItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    render::paintKnob(*painter, PaintingScene::cacheOf(*this), QPointF(0, 0), qDegreesToRadians(m_angle));
}

} // namespace orvan
