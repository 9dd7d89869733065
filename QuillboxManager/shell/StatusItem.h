#pragma once

#include "shell/TrayHost.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

class QMenu;

namespace shell
{

class MenuWindow;

/// The icon in the desktop's tray with the status menu behind it, and the menu's window where there is no tray. Main
/// thread. The icon is made when a tray shows up, so a late one gets it as well, and goes with the tray.
class StatusItem : public QObject
{
    Q_OBJECT
public:
    /// `menu` must outlive the item.
    StatusItem(QMenu &menu, std::unique_ptr<TrayHost> host, QObject *parent = nullptr);
    ~StatusItem() override;

    void show();
    bool hasIcon() const { return icon != nullptr; }
    /// The menu as a window, for when nothing else leads to it.
    void showMenuWindow();
    bool isMenuWindowVisible() const;

private:
    void makeIcon();
    void iconPressed(QSystemTrayIcon::ActivationReason reason);

    QMenu &menu;
    const std::unique_ptr<TrayHost> host;
    std::unique_ptr<QSystemTrayIcon> icon;
    QElapsedTimer sinceMenuWent;
    std::unique_ptr<MenuWindow> menuWindow;
};

} // namespace shell
