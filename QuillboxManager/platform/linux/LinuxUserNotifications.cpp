#include "platform/linux/LinuxUserNotifications.h"

#include "platform/Log.h"
#include "platform/linux/SessionBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>

namespace platform
{

namespace
{
constexpr int desktopsOwnTime = -1;

/// The service may read markup in the text.
QString asPlainText(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&amp;")).replace(QLatin1Char('<'), QLatin1String("&lt;"));
}
} // namespace

void LinuxUserNotifications::schedule(const QString &title, const QString &informativeText)
{
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    QDBusMessage call = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"),
                                                       service, QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("com.velto.quillbox")}};
    call << QStringLiteral("Quillbox") << 0U << QStringLiteral("com.velto.quillbox") << title
         << asPlainText(informativeText) << QStringList() << hints << desktopsOwnTime;
    auto *watcher = new QDBusPendingCallWatcher(bus.connection().asyncCall(call), &bus);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &bus, [watcher, title, informativeText] {
        watcher->deleteLater();
        if (watcher->isError())
            log(QStringLiteral("the desktop shows no notifications: %1, %2").arg(title, informativeText));
    });
}

} // namespace platform
