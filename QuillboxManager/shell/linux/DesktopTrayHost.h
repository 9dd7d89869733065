#pragma once

#include "shell/TrayHost.h"

#include <QAbstractNativeEventFilter>

#include <memory>

class QDBusConnection;
class QDBusServiceWatcher;
struct xcb_connection_t;

namespace platform
{
class SessionBus;
}

namespace shell
{

/// Status icons of free desktops: a watcher on the session bus that knows a host, or the owner of the tray selection of
/// the X screen. Icons must not be made before one of them is there, because the toolkit remembers "no tray" for good.
class DesktopTrayHost : public TrayHost, public QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    explicit DesktopTrayHost(platform::SessionBus &sessionBus, QObject *parent = nullptr);
    ~DesktopTrayHost() override;

    void watch() override;
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private Q_SLOTS:
    void askForHost();

private:
    void watchBus(const QDBusConnection &connection);
    void watchScreen();
    void followOwner(quint32 window);
    /// Keeps what is known of one kind of tray and tells of changes. An icon belongs to one kind: when that may be the
    /// one that goes, it is made anew for the other.
    void note(bool &kind, bool there);

    platform::SessionBus &bus;
    std::unique_ptr<QDBusServiceWatcher> nameWatcher; ///< on the connection of now
    bool onBus = false;
    bool onScreen = false;
    xcb_connection_t *screen = nullptr;
    quint32 selection = 0;
    quint32 manager = 0;
    quint32 trayWindow = 0;
};

} // namespace shell
