#include "ControlAccessible.h"

#include "AccessLayer.h"
#include "ChannelState.h"
#include "DeviceSpec.h"
#include "OrvanMIDI.h"

#include <QGraphicsItem>
#include <QGraphicsView>
#include <QWindow>

namespace orvan {

ControlAccessible::ControlAccessible(const AccessControl& control, AccessLayer& layer, QAccessibleInterface* parent)
    : m_control(control)
    , m_layer(layer)
    , m_parent(parent)
{
}

QWindow* ControlAccessible::window() const
{
    return m_layer.window().windowHandle();
}

QString ControlAccessible::text(QAccessible::Text t) const
{
    const bool isLabel = bool(m_control.text);
    switch (t) {
    case QAccessible::Name:
        return isLabel ? m_control.text() : m_control.name;
    case QAccessible::Description: {
        const QString tip = m_control.item->toolTip();
        return tip.isEmpty() && isLabel ? m_control.name : tip;
    }
    case QAccessible::Value:
        return m_control.gain ? valueText() : QString();
    default:
        return {};
    }
}

QRect ControlAccessible::rect() const
{
    return m_layer.screenRect(m_control.item);
}

QAccessible::State ControlAccessible::state() const
{
    QAccessible::State state;
    state.focusable = m_control.isFocusable();
    state.focused = m_layer.focused() == &m_control;
    state.checkable = bool(m_control.isChecked);
    state.checked = m_control.isChecked && m_control.isChecked();
    state.selectable = bool(m_control.isSelected);
    state.selected = m_control.isSelected && m_control.isSelected();
    state.readOnly = bool(m_control.text);
    state.invisible = !m_control.item->isVisible();
    return state;
}

void* ControlAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface && m_control.gain)
        return static_cast<QAccessibleValueInterface*>(this);
    if (type == QAccessible::ActionInterface && m_control.isFocusable())
        return static_cast<QAccessibleActionInterface*>(this);
    return nullptr;
}

std::optional<ChannelState> ControlAccessible::gainState() const
{
    const auto channel = m_control.gain ? m_control.gain->channel() : std::nullopt;
    if (!channel)
        return std::nullopt;
    return m_control.gain->engine->channels().value(*channel);
}

QString ControlAccessible::valueText() const
{
    const auto state = gainState();
    if (!state)
        return QStringLiteral("no channel selected");
    const auto dB = shownGainDecibels(*state);
    return dB ? QStringLiteral("%1 dB").arg(*dB) : QStringLiteral("unknown");
}

QVariant ControlAccessible::currentValue() const
{
    const auto state = gainState();
    const auto dB = state ? shownGainDecibels(*state) : std::nullopt;
    return dB ? QVariant(*dB) : QVariant();
}

void ControlAccessible::setCurrentValue(const QVariant& value)
{
    // Only whole gain steps exist: move by as many as come closest to the wanted value.
    const QVariant current = currentValue();
    if (!current.isValid() || !value.canConvert<double>())
        return;
    const int steps = int(std::lround((value.toDouble() - current.toDouble()) / kDecibelsPerGainStep));
    if (steps != 0)
        m_control.gain->step(steps);
}

QVariant ControlAccessible::minimumValue() const
{
    const auto state = gainState();
    if (!state)
        return {};
    return gainRange(m_control.gain->engine->spec(), state->di).lowest * kDecibelsPerGainStep;
}

QVariant ControlAccessible::maximumValue() const
{
    const auto state = gainState();
    if (!state)
        return {};
    const qint64 highest = gainRange(m_control.gain->engine->spec(), state->di).highest;
    return std::min(highest * kDecibelsPerGainStep, kMaxShownDecibels);
}

QVariant ControlAccessible::minimumStepSize() const
{
    return kDecibelsPerGainStep;
}

QStringList ControlAccessible::actionNames() const
{
    QStringList names;
    if (m_control.press)
        names << (m_control.isChecked ? toggleAction() : pressAction());
    if (m_control.gain)
        names << increaseAction() << decreaseAction();
    if (m_control.isFocusable())
        names << setFocusAction();
    return names;
}

void ControlAccessible::doAction(const QString& actionName)
{
    if ((actionName == pressAction() || actionName == toggleAction()) && m_control.press)
        m_control.press();
    else if (actionName == increaseAction() && m_control.gain)
        m_control.gain->step(1);
    else if (actionName == decreaseAction() && m_control.gain)
        m_control.gain->step(-1);
    else if (actionName == setFocusAction() && m_control.isFocusable())
        m_layer.setFocused(&m_control);
}

QStringList ControlAccessible::keyBindingsForAction(const QString& actionName) const
{
    if (actionName == pressAction() || actionName == toggleAction())
        return {QStringLiteral("Space")};
    if (actionName == increaseAction())
        return {QStringLiteral("Up")};
    if (actionName == decreaseAction())
        return {QStringLiteral("Down")};
    return {};
}

} // namespace orvan
