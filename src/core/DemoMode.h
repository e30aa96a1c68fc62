#pragma once

#include <QObject>
#include <functional>

namespace orvan {

/// The process-wide demo flag. Every engine whose unit is absent shows its sample set while it is on.
class DemoMode final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)

public:
    /// The one instance, made off on first access (from the main thread); the launch hands in its
    /// choice before the engines start.
    static DemoMode& shared();

    bool active() const { return m_active; }

    /// Unlike most published fields, observers hear every assignment, also one that changes nothing:
    /// assigning true again reloads the sample sets.
    void setActive(bool active);

    /// Calls `observer` with the current value now and with every later assignment, for as long as
    /// `context` lives.
    QMetaObject::Connection subscribe(QObject* context, std::function<void(bool)> observer);

signals:
    void activeChanged(bool active);

private:
    DemoMode() = default;
    bool m_active = false;
};

} // namespace orvan
