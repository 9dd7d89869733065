#include "platform/linux/LinuxReducedMotion.h"

#include "platform/linux/SessionBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace platform
{

namespace
{
const QString common = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString plasma = QStringLiteral("org.kde.kdeglobals.KDE");

QString service()
{
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString path()
{
    return QStringLiteral("/org/freedesktop/portal/desktop");
}

QString interface()
{
    return QStringLiteral("org.freedesktop.portal.Settings");
}
} // namespace

LinuxReducedMotion::LinuxReducedMotion(SessionBus &bus)
{
    connect(&bus, &SessionBus::connected, this, [this](const QDBusConnection &connection) { ask(connection); });
    ask(bus.connection());
}

bool LinuxReducedMotion::asksForLittleMotion(const QMap<QString, QVariantMap> &settings)
{
    const QVariant animations = settings.value(gnome).value(QStringLiteral("enable-animations"));
    const QVariant factor = settings.value(plasma).value(QStringLiteral("AnimationDurationFactor"));
    bool isNumber = false;
    const double duration = factor.toString().toDouble(&isNumber);
    return settings.value(common).value(QStringLiteral("reduced-motion")).toUInt() == 1 ||
           (animations.typeId() == QMetaType::Bool && !animations.toBool()) || (isNumber && duration <= 0);
}

void LinuxReducedMotion::ask(QDBusConnection connection)
{
    if (!connection.isConnected())
        return;
    connection.connect(service(), path(), interface(), QStringLiteral("SettingChanged"), this,
                       SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(service(), path(), interface(), QStringLiteral("ReadAll"));
    call << QStringList{common, gnome, plasma};
    call.setAutoStartService(false);
    auto *watcher = new QDBusPendingCallWatcher(connection.asyncCall(call), this);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sa{sv}}"))
            return;
        settings = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().constFirst());
        wish = asksForLittleMotion(settings);
    });
}

void LinuxReducedMotion::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group != common && group != gnome && group != plasma)
        return;
    settings[group].insert(key, value.variant());
    wish = asksForLittleMotion(settings);
}

} // namespace platform
