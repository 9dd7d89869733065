#include "shell/linux/DesktopTrayHost.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace shell
{

namespace
{
struct FreeReply {
    void operator()(void *reply) const { std::free(reply); }
};
template <class Reply> using ReplyPointer = std::unique_ptr<Reply, FreeReply>;

quint32 atom(xcb_connection_t *screen, const QByteArray &name)
{
    const auto cookie = xcb_intern_atom(screen, false, static_cast<uint16_t>(name.size()), name.constData());
    const ReplyPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(screen, cookie, nullptr));
    return reply ? reply->atom : quint32{XCB_ATOM_NONE};
}

const QString &watcherName()
{
    static const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
    return name;
}
} // namespace

std::unique_ptr<TrayHost> TrayHost::create()
{
    return std::make_unique<DesktopTrayHost>();
}

DesktopTrayHost::DesktopTrayHost(QObject *parent) : TrayHost(parent) {}

DesktopTrayHost::~DesktopTrayHost()
{
    if (screen)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void DesktopTrayHost::watch()
{
    watchBus();
    watchScreen();
}

void DesktopTrayHost::watchBus()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    auto *watcher = new QDBusServiceWatcher(watcherName(), bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayHost::appeared);
    auto *call =
        new QDBusPendingCallWatcher(bus.interface()->asyncCall(QStringLiteral("NameHasOwner"), watcherName()), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<bool> owned = *call;
        call->deleteLater();
        if (!owned.isError() && owned.value())
            Q_EMIT appeared();
    });
}

void DesktopTrayHost::watchScreen()
{
    const auto *native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!native || !native->connection())
        return;
    screen = native->connection();
    selection = atom(screen, QByteArrayLiteral("_NET_SYSTEM_TRAY_S0"));
    manager = atom(screen, QByteArrayLiteral("MANAGER"));
    QCoreApplication::instance()->installNativeEventFilter(this);
    const auto cookie = xcb_get_selection_owner(screen, selection);
    const ReplyPointer<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(screen, cookie, nullptr));
    if (reply && reply->owner != XCB_WINDOW_NONE)
        Q_EMIT appeared();
}

bool DesktopTrayHost::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE)
        return false;
    // A new tray announces itself to everybody; the second word names the selection it took.
    const auto *announcement = reinterpret_cast<const xcb_client_message_event_t *>(event);
    if (announcement->type == manager && announcement->data.data32[1] == selection)
        Q_EMIT appeared();
    return false;
}

} // namespace shell
