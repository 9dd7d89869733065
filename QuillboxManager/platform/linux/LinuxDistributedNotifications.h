#pragma once

#include "platform/DistributedNotificationCenter.h"

#include <QObject>
#include <QSet>

class QDBusConnection;

namespace platform
{

class SessionBus;

/// Distributed notifications as a signal on the session bus: interface "com.velto.quillbox.Notifications", member
/// "posted", arguments the name and the user info as property-list text (empty: none).
class LinuxDistributedNotifications final : public QObject, public DistributedNotificationCenter
{
    Q_OBJECT

public:
    explicit LinuxDistributedNotifications(SessionBus &sessionBus);

    void addObserver(QObject *observer, const QString &name, NotificationHandler handler) override;
    void post(const QString &name, const QVariantMap &userInfo = {}) override;

private Q_SLOTS:
    void deliver(const QString &name, const QString &userInfo);

private:
    void subscribe(QDBusConnection connection, const QString &name);

    SessionBus &bus;
    NotificationCenter observers;
    QSet<QString> names;
};

} // namespace platform
