#include "shell/linux/DesktopTrayHost.h"

#include "platform/linux/SessionBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <utility>

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

QString watcherPath()
{
    return QStringLiteral("/StatusNotifierWatcher");
}
} // namespace

std::unique_ptr<TrayHost> TrayHost::create()
{
    return std::make_unique<DesktopTrayHost>(platform::hostSessionBus());
}

DesktopTrayHost::DesktopTrayHost(platform::SessionBus &sessionBus, QObject *parent) : TrayHost(parent), bus(sessionBus)
{
}

DesktopTrayHost::~DesktopTrayHost()
{
    if (screen)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void DesktopTrayHost::watch()
{
    const QDBusConnection connection = bus.connection();
    connect(&bus, &platform::SessionBus::connected, this, &DesktopTrayHost::watchBus);
    if (connection.isConnected())
        watchBus(connection);
    watchScreen();
}

void DesktopTrayHost::note(bool &kind, bool there)
{
    if (std::exchange(kind, there) == there)
        return;
    if (!there)
        Q_EMIT disappeared();
    if (onBus || onScreen)
        Q_EMIT appeared();
}

void DesktopTrayHost::watchBus(const QDBusConnection &connection)
{
    note(onBus, false); // an icon speaks over the connection it was made with
    nameWatcher =
        std::make_unique<QDBusServiceWatcher>(watcherName(), connection, QDBusServiceWatcher::WatchForOwnerChange);
    connect(nameWatcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                if (owner.isEmpty())
                    note(onBus, false);
                else
                    askForHost();
            });
    QDBusConnection(connection)
        .connect(watcherName(), watcherPath(), watcherName(), QStringLiteral("StatusNotifierHostRegistered"), this,
                 SLOT(askForHost()));
    askForHost();
}

/// The toolkit asks the same when the icon is made, and waits: a watcher that does not answer gets no icon.
void DesktopTrayHost::askForHost()
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName(), watcherPath(), QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setAutoStartService(false);
    question << watcherName() << QStringLiteral("IsStatusNotifierHostRegistered");
    auto *call = new QDBusPendingCallWatcher(nameWatcher->connection().asyncCall(question), nameWatcher.get());
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusVariant> known = *call;
        call->deleteLater();
        if (!known.isError() && known.value().variant().toBool())
            note(onBus, true);
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
        followOwner(reply->owner);
}

void DesktopTrayHost::followOwner(quint32 window)
{
    trayWindow = window;
    const uint32_t events[] = {XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_change_window_attributes(screen, window, XCB_CW_EVENT_MASK, events);
    note(onScreen, true);
}

bool DesktopTrayHost::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const int kind = event->response_type & 0x7f;
    if (kind == XCB_DESTROY_NOTIFY &&
        reinterpret_cast<const xcb_destroy_notify_event_t *>(event)->window == trayWindow && onScreen)
        note(onScreen, false);
    if (kind != XCB_CLIENT_MESSAGE)
        return false;
    // A new tray announces itself to everybody: the second word names the selection it took, the third its window.
    const auto *announcement = reinterpret_cast<const xcb_client_message_event_t *>(event);
    if (announcement->type == manager && announcement->data.data32[1] == selection)
        followOwner(announcement->data.data32[2]);
    return false;
}

} // namespace shell
