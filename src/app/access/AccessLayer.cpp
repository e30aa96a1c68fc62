#include "AccessLayer.h"

#include "ControlAccessible.h"
#include "KeyboardFocus.h"
#include "PanelAccess.h"
#include "PanelGroupAccessible.h"
#include "StageAccessible.h"
#include "stage/DemoPillItem.h"
#include "stage/StageScene.h"
#include "panels/DunraPanelItem.h"
#include "panels/MelkoPanelItem.h"
#include "panels/OrvanPanelItem.h"

#include <QAccessible>
#include <QGraphicsView>

namespace orvan {

AccessLayer::AccessLayer(StageScene& stage, QGraphicsView& window)
    : QObject(&window)
    , m_window(window)
    , m_demoPill(demoPillAccess(*stage.demoPill()))
{
    installFactory();
    // Reading order on the stage: the Dunra at the top left, the Orvan under it, then the Melko.
    m_panels.push_back(panelAccess(dunraFace(*stage.dunraPanel())));
    m_panels.push_back(panelAccess(orvanFace(*stage.orvanPanel())));
    m_panels.push_back(panelAccess(melkoFace(*stage.melkoPanel())));

    std::vector<const AccessControl*> order;
    for (const PanelAccess& panel : m_panels) {
        for (const AccessControl& control : panel.controls)
            order.push_back(&control);
    }
    order.push_back(&m_demoPill);
    m_keyboard = new KeyboardFocus(window, stage, order);
    connect(m_keyboard, &KeyboardFocus::focusChanged, this, &AccessLayer::announceFocus);

    connect(&stage, &StageScene::lookChanged, this, &AccessLayer::scheduleRefresh);
}

AccessLayer::~AccessLayer()
{
    for (ControlAccessible* control : m_controls)
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(control));
    for (PanelGroupAccessible* group : m_groups)
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(group));
}

void AccessLayer::installFactory()
{
    QAccessible::installFactory(&StageAccessible::factory);
}

const AccessControl* AccessLayer::focused() const
{
    return m_keyboard->focused();
}

void AccessLayer::setFocused(const AccessControl* control)
{
    m_keyboard->setFocused(control);
}

void AccessLayer::buildTree()
{
    if (!m_groups.empty())
        return;
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&m_window);
    for (const PanelAccess& panel : m_panels) {
        auto* group = new PanelGroupAccessible(panel, *this);
        QAccessible::registerAccessibleInterface(group);
        AccessibleChildren children;
        for (const AccessControl& control : panel.controls) {
            auto* child = new ControlAccessible(control, *this, group);
            QAccessible::registerAccessibleInterface(child);
            children.push_back(child);
            m_controls.push_back(child);
        }
        group->setChildren(std::move(children));
        m_groups.push_back(group);
        m_groupSeen.push_back(group->description());
    }
    auto* pill = new ControlAccessible(m_demoPill, *this, window);
    QAccessible::registerAccessibleInterface(pill);
    m_controls.push_back(pill);
    for (const ControlAccessible* control : m_controls)
        m_seen.push_back(look(*control));
}

std::vector<QAccessibleInterface*> AccessLayer::topLevels() const
{
    std::vector<QAccessibleInterface*> all(m_groups.begin(), m_groups.end());
    if (!m_controls.empty())
        all.push_back(m_controls.back());
    return all;
}

QAccessibleInterface* AccessLayer::interfaceFor(const AccessControl* control) const
{
    for (ControlAccessible* iface : m_controls) {
        if (&iface->control() == control)
            return iface;
    }
    return nullptr;
}

QRect AccessLayer::screenRect(const QGraphicsItem* item) const
{
    const QRectF scene = item->sceneTransform().map(item->shape()).boundingRect();
    const QRect inViewport = m_window.mapFromScene(scene).boundingRect();
    return QRect(m_window.viewport()->mapToGlobal(inViewport.topLeft()), inViewport.size());
}

void AccessLayer::scheduleRefresh()
{
    // After the panels have redrawn (their tooltips and visibility follow the same signals), and
    // once for a burst of changes.
    if (m_refreshPending)
        return;
    m_refreshPending = true;
    QMetaObject::invokeMethod(this, &AccessLayer::announceChanges, Qt::QueuedConnection);
}

AccessLayer::Seen AccessLayer::look(const ControlAccessible& control) const
{
    const QAccessible::State state = control.state();
    return {.visible = !state.invisible, .checked = bool(state.checked), .selected = bool(state.selected),
            .value = control.text(QAccessible::Value), .name = control.text(QAccessible::Name),
            .description = control.text(QAccessible::Description)};
}

void AccessLayer::announceChanges()
{
    m_refreshPending = false;
    m_keyboard->forgetHidden();
    for (std::size_t i = 0; i < m_groups.size(); ++i) {
        const QString description = m_groups[i]->description();
        if (description != m_groupSeen[i]) {
            m_groupSeen[i] = description;
            QAccessibleEvent event(m_groups[i], QAccessible::DescriptionChanged);
            QAccessible::updateAccessibility(&event);
        }
    }
    for (std::size_t i = 0; i < m_controls.size(); ++i) {
        ControlAccessible* control = m_controls[i];
        const Seen now = look(*control);
        Seen& before = m_seen[i];
        if (now.visible != before.visible) {
            QAccessibleEvent event(control, now.visible ? QAccessible::ObjectShow : QAccessible::ObjectHide);
            QAccessible::updateAccessibility(&event);
        }
        if (now.checked != before.checked || now.selected != before.selected) {
            QAccessible::State changed;
            changed.checked = now.checked != before.checked;
            changed.selected = now.selected != before.selected;
            QAccessibleStateChangeEvent event(control, changed);
            QAccessible::updateAccessibility(&event);
        }
        if (now.value != before.value) {
            QAccessibleValueChangeEvent event(control, control->currentValue());
            QAccessible::updateAccessibility(&event);
        }
        if (now.name != before.name) {
            QAccessibleEvent event(control, QAccessible::NameChanged);
            QAccessible::updateAccessibility(&event);
        }
        if (now.description != before.description) {
            QAccessibleEvent event(control, QAccessible::DescriptionChanged);
            QAccessible::updateAccessibility(&event);
        }
        before = now;
    }
}

void AccessLayer::announceFocus(const AccessControl* control)
{
    if (m_controls.empty() || !control)
        return;
    if (QAccessibleInterface* iface = interfaceFor(control)) {
        QAccessibleEvent event(iface, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace orvan
