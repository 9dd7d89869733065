#include "shell/StatusItem.h"

#include "shell/MenuWindow.h"
#include "shell/ShellStrings.h"
#include "ui/Images.h"

#include <QCursor>
#include <QMenu>

namespace shell
{

StatusItem::StatusItem(QMenu &statusMenu, std::unique_ptr<TrayHost> trayHost, QObject *parent)
    : QObject(parent), menu(statusMenu), host(std::move(trayHost))
{
    // Queued: a tray that goes is noticed in the middle of the icon's own work.
    connect(host.get(), &TrayHost::appeared, this, &StatusItem::makeIcon, Qt::QueuedConnection);
    connect(
        host.get(), &TrayHost::disappeared, this, [this] { icon.reset(); }, Qt::QueuedConnection);
    connect(&menu, &QMenu::aboutToHide, this, [this] { sinceMenuWent.start(); });
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
    connect(icon.get(), &QSystemTrayIcon::activated, this, &StatusItem::iconPressed);
    icon->show();
}

void StatusItem::iconPressed(QSystemTrayIcon::ActivationReason reason)
{
    // On its way here the press itself may have closed the menu, as presses beside a menu do.
    constexpr qint64 onePressMilliseconds = 300;
    const bool wasOpen = sinceMenuWent.isValid() && !sinceMenuWent.hasExpired(onePressMilliseconds);
    const bool primary = reason == QSystemTrayIcon::Trigger;
    if (wasOpen || (primary && menu.isVisible()))
        menu.hide(); // also what a secondary press has just opened again
    else if (primary)
        menu.popup(QCursor::pos());
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
