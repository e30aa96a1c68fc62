#pragma once

#include "StageRig.h"

#include <QAccessible>
#include <QAccessibleInterface>

namespace orvan::test {

/// Reads the window's accessibility tree the way an assistive technology does: only through
/// Qt's accessible interfaces, starting at the window.
struct AccessTree {
    explicit AccessTree(StageRig& rig)
        : window(QAccessible::queryAccessibleInterface(&rig.window()))
    {
    }

    QAccessibleInterface* group(const QString& name) const
    {
        for (int i = 0; i < window->childCount(); ++i) {
            QAccessibleInterface* child = window->child(i);
            if (child->role() == QAccessible::Grouping && child->text(QAccessible::Name) == name)
                return child;
        }
        return nullptr;
    }

    /// The control of `groupName` (empty: the window itself) called `name`; a label is called by its text.
    QAccessibleInterface* control(const QString& groupName, const QString& name) const
    {
        QAccessibleInterface* panel = groupName.isEmpty() ? window : group(groupName);
        for (int i = 0; panel && i < panel->childCount(); ++i) {
            QAccessibleInterface* child = panel->child(i);
            if (child->text(QAccessible::Name) == name)
                return child;
        }
        return nullptr;
    }

    /// "Orvan/Channel 1 48V" for the control that has keyboard focus; empty if none.
    QString focusPath() const
    {
        QAccessibleInterface* focused = window->focusChild();
        if (!focused || focused == window || !focused->state().focused)
            return {};
        QAccessibleInterface* parent = focused->parent();
        const QString group = parent && parent != window ? parent->text(QAccessible::Name) + u'/' : QString();
        return group + focused->text(QAccessible::Name);
    }

    QAccessibleInterface* window;
};

/// (controller, value) of every message sent to `unit`, in order.
inline std::vector<std::pair<int, int>> sent(const StageRig& rig, const QString& unit)
{
    std::vector<std::pair<int, int>> messages;
    for (const auto& m : rig.sentTo(unit))
        messages.emplace_back(m.controller(), m.value());
    return messages;
}

} // namespace orvan::test
