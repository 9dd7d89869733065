#include "platform/linux/SessionBus.h"

#include "platform/Log.h"

#include <QDBusMessage>
#include <QFile>

#include <algorithm>

namespace platform
{

namespace
{

constexpr int answerMilliseconds = 500;

/// Null when the session has no bus. The bus library would then look for one by ways of its own and may start a stray.
QString busAddress()
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return address;
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus");
    return QFile::exists(socket) ? QStringLiteral("unix:path=") + socket : QString();
}

} // namespace

SessionBus::SessionBus()
{
    retry.setSingleShot(true);
    retry.callOnTimeout(this, &SessionBus::tryAgain);
}

SessionBus::~SessionBus()
{
    dropConnection();
}

QDBusConnection SessionBus::connection()
{
    if (name.isNull() || !QDBusConnection(name).isConnected())
        connectNow();
    return QDBusConnection(name.isNull() ? QStringLiteral("none") : name);
}

void SessionBus::connectNow()
{
    dropConnection();
    const QString address = busAddress();
    // A connection that was lost once never comes back under its old name.
    const QString fresh = QStringLiteral("quillbox-%1-%2").arg(quintptr(this), 0, 16).arg(++connections);
    if (address.isNull() || !QDBusConnection::connectToBus(address, fresh).isConnected()) {
        QDBusConnection::disconnectFromBus(fresh);
        if (!absenceLogged)
            log(QStringLiteral("No session bus: nothing is exchanged with other processes"));
        absenceLogged = true;
        return;
    }
    name = fresh;
    absenceLogged = false;
    pause = firstPause;
    retry.stop();
    QDBusConnection current(name);
    current.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                    QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SLOT(lost()));
    Q_EMIT connected(current);
}

void SessionBus::dropConnection()
{
    if (!name.isNull())
        QDBusConnection::disconnectFromBus(name);
    name = QString();
}

void SessionBus::lost()
{
    if (name.isNull() || QDBusConnection(name).isConnected())
        return; // late word of a connection that has been replaced
    log(QStringLiteral("The session bus is gone"));
    dropConnection();
    absenceLogged = true;
    retry.start(pause);
}

void SessionBus::tryAgain()
{
    if (name.isNull())
        connectNow();
    if (name.isNull()) {
        pause = std::min(pause * 2, longestPause);
        retry.start(pause);
    }
}

bool SessionBus::flush()
{
    const QDBusMessage question =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
    return connection().call(question, QDBus::Block, answerMilliseconds).type() == QDBusMessage::ReplyMessage;
}

} // namespace platform
