#pragma once

#include "AccessControl.h"
#include "ChannelState.h"

#include <QAccessibleInterface>

namespace orvan {

class AccessLayer;

/// What a screen reader sees of one panel control: its role and name, its tooltip as the
/// description, a lamp's checked state, a gain control's value as the readout shows it ("24 dB",
/// "unknown") with its range, and the actions a click, drag or scroll would do.
class ControlAccessible final : public QAccessibleInterface,
                                public QAccessibleValueInterface,
                                public QAccessibleActionInterface {
public:
    ControlAccessible(const AccessControl& control, AccessLayer& layer, QAccessibleInterface* parent);

    const AccessControl& control() const { return m_control; }

    bool isValid() const override { return true; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override { return m_parent; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return m_control.role; }
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override;

    QStringList actionNames() const override;
    void doAction(const QString& actionName) override;
    QStringList keyBindingsForAction(const QString& actionName) const override;

    /// The value as the display reads it: "24 dB", "unknown", or "no channel selected".
    QString valueText() const;

private:
    /// The channel a gain control shows, as its engine has it; none without a channel.
    std::optional<ChannelState> gainState() const;

    const AccessControl& m_control;
    AccessLayer& m_layer;
    QAccessibleInterface* m_parent;
};

} // namespace orvan
