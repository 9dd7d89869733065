#pragma once

#include "shell/TrayHost.h"

#include <QAbstractNativeEventFilter>

struct xcb_connection_t;

namespace shell
{

/// Status icons of free desktops: a watcher name on the session bus, or the owner of the tray selection of the X
/// screen. Icons must not be made before one of them is there, because the toolkit remembers "no tray" for good.
class DesktopTrayHost : public TrayHost, public QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    explicit DesktopTrayHost(QObject *parent = nullptr);
    ~DesktopTrayHost() override;

    void watch() override;
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    void watchBus();
    void watchScreen();

    xcb_connection_t *screen = nullptr;
    quint32 selection = 0;
    quint32 manager = 0;
};

} // namespace shell
