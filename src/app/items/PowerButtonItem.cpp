#include "PowerButtonItem.h"

#include "Controls.h"
#include "PressLook.h"
#include "panels/PaintingScene.h"

#include <QPainter>

namespace orvan {

PowerButtonItem::PowerButtonItem(std::function<bool()> isConnected, QString connectedTip, QString missingTip,
                                 std::function<void()> action, QGraphicsItem* parent)
    : PushItem(QSizeF(kFaceDiameter, kFaceDiameter), std::move(action), parent)
    , m_isConnected(std::move(isConnected))
    , m_connectedTip(std::move(connectedTip))
    , m_missingTip(std::move(missingTip))
{
    setCacheMode(DeviceCoordinateCache); // repainted only when its look changes
    m_connected = !m_isConnected();
    refresh();
}

bool PowerButtonItem::refresh()
{
    if (!repaintIfChanged(*this, m_connected, m_isConnected()))
        return false;
    setToolTip(m_connected ? m_connectedTip : m_missingTip);
    return true;
}

void PowerButtonItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const PressLook press(*painter, boundingRect(), QPointF(0, 0), isPressed());
    render::paintPowerButton(press.painter(), PaintingScene::cacheOf(*this), QPointF(0, 0), m_connected);
}

} // namespace orvan
