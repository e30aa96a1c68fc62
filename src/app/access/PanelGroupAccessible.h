#pragma once

#include "AccessControl.h"

#include <QAccessibleInterface>
#include <algorithm>
#include <vector>

namespace orvan {

class AccessLayer;

using AccessibleChildren = std::vector<QAccessibleInterface*>;

/// `children[index]`, or nullptr out of range.
inline QAccessibleInterface* childAtIndex(const AccessibleChildren& children, int index)
{
    return index >= 0 && index < int(children.size()) ? children[std::size_t(index)] : nullptr;
}

/// Where `child` stands among `children`, or -1.
inline int indexAmong(const AccessibleChildren& children, const QAccessibleInterface* child)
{
    const auto at = std::ranges::find(children, child);
    return at == children.end() ? -1 : int(at - children.begin());
}

/// The first child of `children` whose rectangle holds the screen point, or nullptr.
inline QAccessibleInterface* childAtPoint(const AccessibleChildren& children, int x, int y)
{
    for (QAccessibleInterface* child : children) {
        if (!child->state().invisible && child->rect().contains(x, y))
            return child;
    }
    return nullptr;
}

/// One panel as a screen reader sees it: a group named after its unit, whose description says
/// whether the unit is found, holding the panel's controls in reading order.
class PanelGroupAccessible final : public QAccessibleInterface {
public:
    PanelGroupAccessible(const PanelAccess& panel, AccessLayer& layer);

    void setChildren(AccessibleChildren children) { m_children = std::move(children); }
    /// "Orvan found", "Orvan not found" or "Orvan not found: showing demo settings".
    QString description() const;

    bool isValid() const override { return true; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override { return childAtIndex(m_children, index); }
    int childCount() const override { return int(m_children.size()); }
    int indexOfChild(const QAccessibleInterface* child) const override { return indexAmong(m_children, child); }
    QAccessibleInterface* childAt(int x, int y) const override { return childAtPoint(m_children, x, y); }
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::Grouping; }
    QAccessible::State state() const override { return {}; }

private:
    const PanelAccess& m_panel;
    AccessLayer& m_layer;
    AccessibleChildren m_children;
};

} // namespace orvan
