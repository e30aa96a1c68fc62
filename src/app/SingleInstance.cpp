#include "SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace orvan {

namespace {

QDBusConnection bus(const QString& name)
{
    return name.isEmpty() ? QDBusConnection::sessionBus() : QDBusConnection(name);
}

/// A window that cannot answer at once is hung: better a second window than a launch that waits.
constexpr int kRaiseTimeoutMilliseconds = 2000;

} // namespace

const QString SingleInstance::kServiceName = QStringLiteral("org.orvanrcu.orvanrcu");
const QString SingleInstance::kObjectPath = QStringLiteral("/org/orvanrcu/orvanrcu/Window");

SingleInstance::SingleInstance(bool mayHandOver, const QString& connectionName)
    : m_connectionName(connectionName)
{
    QDBusConnection connection = bus(connectionName);
    if (!connection.isConnected())
        return;
    QDBusConnectionInterface* names = connection.interface();
    const auto reply = names->registerService(kServiceName, QDBusConnectionInterface::DontQueueService,
                                              QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) {
        connection.registerObject(kObjectPath, this, QDBusConnection::ExportScriptableSlots);
        m_outcome = Outcome::owner;
        return;
    }
    if (!mayHandOver)
        return;
    const QDBusMessage raise = QDBusMessage::createMethodCall(kServiceName, kObjectPath,
                                                              QStringLiteral("org.orvanrcu.orvanrcu.Window"),
                                                              QStringLiteral("Raise"));
    const QDBusMessage answer = connection.call(raise, QDBus::Block, kRaiseTimeoutMilliseconds);
    if (answer.type() == QDBusMessage::ReplyMessage)
        m_outcome = Outcome::handedOver;
}

SingleInstance::~SingleInstance()
{
    if (m_outcome != Outcome::owner)
        return;
    QDBusConnection connection = bus(m_connectionName);
    connection.unregisterObject(kObjectPath);
    connection.interface()->unregisterService(kServiceName);
}

void SingleInstance::Raise() { emit raiseRequested(); }

} // namespace orvan
