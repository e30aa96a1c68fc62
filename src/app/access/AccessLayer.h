#pragma once

#include "AccessControl.h"

#include <QObject>
#include <QRect>
#include <memory>

class QAccessibleInterface;
class QGraphicsView;

namespace orvan {

class ControlAccessible;
class KeyboardFocus;
class PanelGroupAccessible;
class StageScene;

/// Makes the stage usable from the keyboard and by screen readers. It holds each panel's table of
/// controls, the keyboard focus, and, once a screen reader (or a test) first asks for the window's
/// accessible interface, one accessible object per panel and control. While those exist, every
/// change a panel shows (a lamp, a reported gain, the connection, the status lines) is announced
/// with the accessibility event a screen reader listens for. Lives as a child of the window.
class AccessLayer final : public QObject {
    Q_OBJECT

public:
    AccessLayer(StageScene& stage, QGraphicsView& window);
    ~AccessLayer() override;

    /// Lets Qt ask us for the window's accessible interface; call before the window exists.
    static void installFactory();

    QGraphicsView& window() const { return m_window; }
    KeyboardFocus& keyboard() const { return *m_keyboard; }
    const AccessControl* focused() const;
    void setFocused(const AccessControl* control);

    void buildTree();
    /// The panel groups in reading order, then the demo pill; none before buildTree().
    std::vector<QAccessibleInterface*> topLevels() const;
    QAccessibleInterface* interfaceFor(const AccessControl* control) const;

    /// Where a scene item is on the screen.
    QRect screenRect(const QGraphicsItem* item) const;

private:
    /// What a screen reader was last told about a control.
    struct Seen {
        bool visible = false;
        bool checked = false;
        bool selected = false;
        QString value;
        QString name;
        QString description;
    };

    void scheduleRefresh();
    void announceChanges();
    void announceFocus(const AccessControl* control);
    Seen look(const ControlAccessible& control) const;

    QGraphicsView& m_window;
    std::vector<PanelAccess> m_panels;
    AccessControl m_demoPill;
    KeyboardFocus* m_keyboard;
    bool m_refreshPending = false;

    std::vector<PanelGroupAccessible*> m_groups;
    std::vector<QString> m_groupSeen;
    std::vector<ControlAccessible*> m_controls; ///< every control, in reading order, the pill last
    std::vector<Seen> m_seen;
};

} // namespace orvan
