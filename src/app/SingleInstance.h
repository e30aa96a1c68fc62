#pragma once

#include <QObject>
#include <QString>
#include <memory>

namespace orvan {

/// One window per desktop session: the first launch owns a name on the D-Bus session bus, a
/// later one asks it to raise its window and ends. Where there is no session bus, every launch
/// runs on its own, as before.
class SingleInstance final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.orvanrcu.orvanrcu.Window")

public:
    static const QString kServiceName;
    static const QString kObjectPath;

    enum class Outcome {
        owner,       ///< this launch owns the name: run, and raise when asked
        handedOver,  ///< the running window was asked to raise: end this launch
        alone,       ///< no bus, or the name is taken and this launch may not hand over: just run
    };

    /// Claims the name on `connectionName`'s session bus (the default one when empty). With
    /// `mayHandOver` false (a launch that a session manager owns) it never hands over.
    explicit SingleInstance(bool mayHandOver, const QString& connectionName = {});
    ~SingleInstance() override;

    Outcome outcome() const { return m_outcome; }

public slots:
    /// Called over the bus by a later launch.
    Q_SCRIPTABLE void Raise();

signals:
    void raiseRequested();

private:
    Outcome m_outcome = Outcome::alone;
    QString m_connectionName;
};

} // namespace orvan
