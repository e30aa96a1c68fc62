#pragma once

#include "AccessControl.h"

#include <QAccessibleInterface>

namespace orvan {

class AccessLayer;
class ControlAccessible;

/// One panel as a screen reader sees it: a group named after its unit, whose description says
/// whether the unit is found, holding the panel's controls in reading order.
class PanelGroupAccessible final : public QAccessibleInterface {
public:
    PanelGroupAccessible(const PanelAccess& panel, AccessLayer& layer);

    void setChildren(std::vector<ControlAccessible*> children) { m_children = std::move(children); }
    /// "Orvan found", "Orvan not found" or "Orvan not found: showing demo settings".
    QString description() const;

    bool isValid() const override { return true; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    int childCount() const override { return int(m_children.size()); }
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::Grouping; }
    QAccessible::State state() const override { return {}; }

private:
    const PanelAccess& m_panel;
    AccessLayer& m_layer;
    std::vector<ControlAccessible*> m_children;
};

/// The first child of `children` whose rectangle holds the screen point, or nullptr.
template <typename Interfaces>
QAccessibleInterface* childAtPoint(const Interfaces& children, int x, int y)
{
    for (QAccessibleInterface* child : children) {
        if (!child->state().invisible && child->rect().contains(x, y))
            return child;
    }
    return nullptr;
}

} // namespace orvan
