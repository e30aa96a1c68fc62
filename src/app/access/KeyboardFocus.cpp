#include "KeyboardFocus.h"

#include "FocusRingItem.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QShortcut>
#include <algorithm>

namespace orvan {

KeyboardFocus::KeyboardFocus(QAbstractScrollArea& window, QGraphicsScene& scene,
                             std::vector<const AccessControl*> order)
    : QObject(&window)
    , m_viewport(window.viewport())
    , m_order(std::move(order))
    , m_ring(new FocusRingItem)
{
    std::erase_if(m_order, [](const AccessControl* control) { return !control->isFocusable(); });
    scene.addItem(m_ring);
    window.installEventFilter(this);
    window.viewport()->installEventFilter(this);
    // Ctrl+Q belongs to CleanQuit, the one way out.
}

void KeyboardFocus::setFocused(const AccessControl* control)
{
    if (control == m_focused)
        return;
    m_focused = control;
    m_ring->ring(control ? control->item : nullptr, control && control->role == QAccessible::Dial);
    emit focusChanged(control);
}

void KeyboardFocus::forgetHidden()
{
    if (m_focused && !m_focused->item->isVisible())
        setFocused(nullptr);
}

void KeyboardFocus::move(int direction)
{
    const int count = int(m_order.size());
    const auto at = std::find(m_order.begin(), m_order.end(), m_focused);
    int index = at == m_order.end() ? (direction > 0 ? -1 : count) : int(at - m_order.begin());
    for (int tries = 0; tries < count; ++tries) {
        index = ((index + direction) % count + count) % count;
        if (m_order[std::size_t(index)]->item->isVisible()) {
            setFocused(m_order[std::size_t(index)]);
            return;
        }
    }
}

bool KeyboardFocus::step(int steps)
{
    if (!m_focused || !m_focused->gain)
        return false;
    m_focused->gain->step(steps);
    return true;
}

bool KeyboardFocus::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_viewport && event->type() == QEvent::MouseButtonPress)
        setFocused(nullptr); // and the press goes on to the panels
    if (watched == m_viewport || event->type() != QEvent::KeyPress)
        return false;
    return keyPressed(*static_cast<QKeyEvent*>(event));
}

bool KeyboardFocus::keyPressed(const QKeyEvent& key)
{
    const bool shift = key.modifiers() & Qt::ShiftModifier;
    switch (key.key()) {
    case Qt::Key_Tab:
        move(shift ? -1 : 1);
        return true;
    case Qt::Key_Backtab:
        move(-1);
        return true;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // A held key presses once: a lamp must not flicker on and off.
        if (!m_focused || !m_focused->press)
            return false;
        if (!key.isAutoRepeat())
            m_focused->press();
        return true;
    case Qt::Key_Up:
        return step(1);
    case Qt::Key_Down:
        return step(-1);
    case Qt::Key_PageUp:
        return step(kPageSteps);
    case Qt::Key_PageDown:
        return step(-kPageSteps);
    case Qt::Key_Escape:
        if (!m_focused)
            return false;
        setFocused(nullptr);
        return true;
    default:
        return false;
    }
}

} // namespace orvan
