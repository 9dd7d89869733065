#include "platform/linux/LinuxDistributedNotifications.h"

#include "platform/Dispatch.h"
#include "platform/PropertyList.h"
#include "platform/linux/SessionBus.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace platform
{

namespace
{
QString objectPath()
{
    return QStringLiteral("/com/velto/quillbox/Notifications");
}
QString interfaceName()
{
    return QStringLiteral("com.velto.quillbox.Notifications");
}
QString memberName()
{
    return QStringLiteral("posted");
}
} // namespace

LinuxDistributedNotifications::LinuxDistributedNotifications(SessionBus &sessionBus) : bus(sessionBus)
{
    QObject::connect(&bus, &SessionBus::connected, this, [this](const QDBusConnection &connection) {
        for (const QString &name : std::as_const(names))
            subscribe(connection, name);
    });
}

void LinuxDistributedNotifications::subscribe(QDBusConnection connection, const QString &name)
{
    connection.connect(QString(), objectPath(), interfaceName(), memberName(), QStringList{name}, QStringLiteral("ss"),
                       this, SLOT(deliver(QString, QString)));
}

void LinuxDistributedNotifications::addObserver(QObject *observer, const QString &name, NotificationHandler handler)
{
    observers.addObserver(observer, name, std::move(handler));
    if (names.contains(name))
        return;
    const QDBusConnection connection = bus.connection(); // a new one subscribes the names so far by itself
    names.insert(name);
    if (connection.isConnected())
        subscribe(connection, name);
}

void LinuxDistributedNotifications::post(const QString &name, const QVariantMap &userInfo)
{
    const QDBusConnection connection = bus.connection();
    if (!connection.isConnected())
        return;
    const QString text = userInfo.isEmpty() ? QString() : QString::fromUtf8(PropertyList::serialize(userInfo));
    QDBusMessage signal = QDBusMessage::createSignal(objectPath(), interfaceName(), memberName());
    signal.setArguments({name, text});
    connection.send(signal);
    // Sending only queues the message; a process that ended now would take it along.
    bus.flush();
}

void LinuxDistributedNotifications::deliver(const QString &name, const QString &userInfo)
{
    const auto parsed = userInfo.isEmpty() ? std::nullopt : PropertyList::parse(userInfo.toUtf8());
    observers.post(name, QVariant(), parsed ? parsed->toMap() : QVariantMap());
}

} // namespace platform
