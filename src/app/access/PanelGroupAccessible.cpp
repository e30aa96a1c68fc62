#include "PanelGroupAccessible.h"

#include "AccessLayer.h"
#include "ControlAccessible.h"
#include "OrvanMIDI.h"

#include <QGraphicsView>

namespace orvan {

PanelGroupAccessible::PanelGroupAccessible(const PanelAccess& panel, AccessLayer& layer)
    : m_panel(panel)
    , m_layer(layer)
{
}

QString PanelGroupAccessible::description() const
{
    if (m_panel.engine->hardwarePresent())
        return QStringLiteral("%1 found").arg(m_panel.name);
    if (m_panel.engine->isConnected())
        return QStringLiteral("%1 not found: showing demo settings").arg(m_panel.name);
    return QStringLiteral("%1 not found").arg(m_panel.name);
}

QWindow* PanelGroupAccessible::window() const
{
    return m_layer.window().windowHandle();
}

QAccessibleInterface* PanelGroupAccessible::parent() const
{
    return QAccessible::queryAccessibleInterface(&m_layer.window());
}

QString PanelGroupAccessible::text(QAccessible::Text t) const
{
    if (t == QAccessible::Name)
        return m_panel.name;
    if (t == QAccessible::Description)
        return description();
    return {};
}

QRect PanelGroupAccessible::rect() const
{
    return m_layer.screenRect(m_panel.panel);
}

} // namespace orvan
