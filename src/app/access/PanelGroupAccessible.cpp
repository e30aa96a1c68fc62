#include "PanelGroupAccessible.h"

#include "AccessLayer.h"
#include "ControlAccessible.h"
#include "OrvanMIDI.h"

#include <QGraphicsView>
#include <algorithm>

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

QAccessibleInterface* PanelGroupAccessible::child(int index) const
{
    return index >= 0 && index < childCount() ? m_children[std::size_t(index)] : nullptr;
}

int PanelGroupAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    const auto at = std::find(m_children.begin(), m_children.end(), child);
    return at == m_children.end() ? -1 : int(at - m_children.begin());
}

QAccessibleInterface* PanelGroupAccessible::childAt(int x, int y) const
{
    return childAtPoint(m_children, x, y);
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
