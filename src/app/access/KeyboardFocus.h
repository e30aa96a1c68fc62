#pragma once

#include "AccessControl.h"

#include <QObject>

class QGraphicsScene;
class QKeyEvent;
class QAbstractScrollArea;

namespace orvan {

class FocusRingItem;

/// Keyboard use of the panels, watching the window's key presses: Tab and Shift+Tab move through
/// the controls in reading order (wrapping around), Space and Return press the focused control,
/// Up and Down step a focused gain control by one step and Page Up and Page Down by several,
/// Escape leaves the controls. Arrow keys with no gain control focused are left to the window
/// (the stage's own gain rule). A mouse press leaves the controls too: the ring belongs to the
/// keyboard. Ctrl+Q quits.
class KeyboardFocus final : public QObject {
    Q_OBJECT

public:
    KeyboardFocus(QAbstractScrollArea& window, QGraphicsScene& scene, std::vector<const AccessControl*> order);

    const AccessControl* focused() const { return m_focused; }
    /// Focuses `control` (nullptr: none) and rings it.
    void setFocused(const AccessControl* control);
    /// Drops the focus if its control is no longer shown.
    void forgetHidden();

    static constexpr int kPageSteps = 4; ///< 12 dB

signals:
    void focusChanged(const AccessControl* focused);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void move(int direction);
    bool step(int steps);
    bool keyPressed(const QKeyEvent& key);

    QObject* m_viewport;

    std::vector<const AccessControl*> m_order;
    const AccessControl* m_focused = nullptr;
    FocusRingItem* m_ring;
};

} // namespace orvan
