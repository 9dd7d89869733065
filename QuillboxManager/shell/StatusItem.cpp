#include "shell/StatusItem.h"

#include "shell/MenuWindow.h"
#include "shell/ShellStrings.h"
#include "ui/Images.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

namespace shell
{

StatusItem::StatusItem(QMenu &statusMenu, std::unique_ptr<TrayHost> trayHost, QObject *parent)
    : QObject(parent), menu(statusMenu), host(std::move(trayHost))
{
    connect(host.get(), &TrayHost::appeared, this, &StatusItem::makeIcon);
}

StatusItem::~StatusItem() = default;

void StatusItem::show()
{
    host->watch();
}

void StatusItem::makeIcon()
{
    if (icon)
        return;
    icon = std::make_unique<QSystemTrayIcon>(Images::imageNamed(QStringLiteral("StatuBarIcon")));
    icon->setToolTip(ShellStrings::toolTip());
    icon->setContextMenu(&menu);
    connect(icon.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            menu.popup(QCursor::pos());
    });
    icon->show();
}

void StatusItem::showMenuWindow()
{
    if (!menuWindow)
        menuWindow = std::make_unique<MenuWindow>(menu);
    menuWindow->present();
}

bool StatusItem::isMenuWindowVisible() const
{
    return menuWindow && menuWindow->isVisible();
}

} // namespace shell
