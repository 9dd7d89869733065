#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QMap>
#include <QObject>
#include <QVariantMap>

namespace platform
{

class SessionBus;

/// The desktop's wish for little motion, from its settings portal. Never starts the portal. Main thread.
class LinuxReducedMotion : public QObject
{
    Q_OBJECT
public:
    explicit LinuxReducedMotion(SessionBus &bus);

    bool wanted() const { return wish; }

    /// What the portal's settings mean; a namespace or key that is missing asks for nothing.
    static bool asksForLittleMotion(const QMap<QString, QVariantMap> &settings);

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void ask(QDBusConnection connection);

    QMap<QString, QVariantMap> settings;
    bool wish = false;
};

} // namespace platform
