#pragma once

#include "StageRig.h"

#include <QAccessible>
#include <QAccessibleInterface>

namespace orvan::test {

/// Reads the window's accessibility tree the way an assistive technology does: only through
/// Qt's accessible interfaces, starting at the window.
struct AccessTree {
    explicit AccessTree(StageRig& rig) : window(QAccessible::queryAccessibleInterface(&rig.window())) {}

    /// The child of `parent` called `name`, or null.
    static QAccessibleInterface* child(QAccessibleInterface* parent, const QString& name)
    {
        for (int i = 0; parent && i < parent->childCount(); ++i) {
            if (parent->child(i)->text(QAccessible::Name) == name)
                return parent->child(i);
        }
        return nullptr;
    }
    QAccessibleInterface* group(const QString& name) const { return child(window, name); }
    /// The control of `groupName` (empty: the window itself) called `name`; a label is called by its text.
    QAccessibleInterface* control(const QString& groupName, const QString& name) const
    {
        return child(groupName.isEmpty() ? window : group(groupName), name);
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

} // namespace orvan::test
