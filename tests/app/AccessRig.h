#pragma once

#include "StageRig.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QTest>

namespace orvan::test {

inline constexpr int kFocusStops = 24 + 68 + 12 + 1; // Dunra, Orvan, Melko, the demo pill

/// A real key press and release, through the window system's path to `window` (the stage or a dialog).
inline void press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(window.windowHandle(), key, modifiers);
    QApplication::processEvents();
}

/// The application read through its accessibility tree the way an assistive technology does (only
/// through Qt's accessible interfaces, starting at the window) and driven by real key presses.
struct AccessRig : StageRig {
    explicit AccessRig(QStringList units = {}, bool demo = false)
        : StageRig(std::move(units), demo)
        , root(QAccessible::queryAccessibleInterface(&window()))
    {
    }

    /// The child of `parent` called `name`, or null.
    static QAccessibleInterface* child(QAccessibleInterface* parent, const QString& name)
    {
        for (int i = 0; parent && i < parent->childCount(); ++i) {
            if (parent->child(i)->text(QAccessible::Name) == name)
                return parent->child(i);
        }
        return nullptr;
    }
    QAccessibleInterface* group(const QString& name) const { return child(root, name); }
    /// The control of `groupName` (empty: the window itself) called `name`; a label is called by its text.
    QAccessibleInterface* control(const QString& groupName, const QString& name) const
    {
        return child(groupName.isEmpty() ? root : group(groupName), name);
    }

    /// "Orvan/Channel 1 48V" for the control that has keyboard focus; empty if none.
    QString focusPath() const
    {
        QAccessibleInterface* focused = root->focusChild();
        if (!focused || focused == root || !focused->state().focused)
            return {};
        QAccessibleInterface* parent = focused->parent();
        const QString group = parent && parent != root ? parent->text(QAccessible::Name) + u'/' : QString();
        return group + focused->text(QAccessible::Name);
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) { test::press(window(), key, modifiers); }
    /// Tab pressed until `path` has the focus (one round at most).
    void tabTo(const QString& path)
    {
        for (int i = 0; i <= kFocusStops && focusPath() != path; ++i)
            press(Qt::Key_Tab);
        ASSERT_EQ(focusPath(), path);
    }

    QAccessibleInterface* root; ///< the window's own interface
};

} // namespace orvan::test
