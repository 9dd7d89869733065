#include "shell/StatusMenu.h"

#include "shell/QBMenuItem.h"
#include "shell/QBSubMenuItem.h"

#include <utility>

namespace shell
{

namespace
{
constexpr QMargins RoomAround{0, 4, 0, 4};
}

StatusMenu::StatusMenu(std::function<bool(int)> validator, QObject *parent)
    : QObject(parent), validateItem(std::move(validator))
{
    items.setObjectName(QStringLiteral("menu"));
    items.setContentsMargins(RoomAround);
    connect(&items, &QMenu::aboutToShow, this, &StatusMenu::validate);
}

QBMenuItem *StatusMenu::makeItem(const MenuEntry &entry)
{
    QBMenuItem *item = nullptr;
    if (entry.mainString.isNull()) {
        item = new QBMenuItem(entry.title, entry.action, &items);
        item->setUpWithTitle(entry.title);
    } else {
        item = QBMenuItem::initWithTitle(entry.title, entry.action, {}, entry.mainString, &items);
    }
    item->setObjectName(entry.name);
    item->setData(entry.tag);
    return item;
}

MenuRow *StatusMenu::entryTitled(const QString &title) const
{
    for (QAction *action : items.actions())
        if (auto *row = qobject_cast<MenuRow *>(action); row && row->title() == title)
            return row;
    return nullptr;
}

void StatusMenu::addSubmenu(const MenuEntry &entry, const QList<MenuEntry> &entries)
{
    auto *submenu = new QMenu(&items);
    submenu->setObjectName(entry.name + QStringLiteral("Submenu"));
    submenu->setContentsMargins(RoomAround);
    for (const MenuEntry &child : entries) {
        auto *item = new QBSubMenuItem(child.title, child.action, submenu);
        item->setObjectName(child.name);
        submenu->addAction(item);
    }
    QBMenuItem *item = makeItem(entry);
    item->setMenu(submenu);
    items.addAction(item);
}

void StatusMenu::insertEntry(int index, const MenuEntry &entry)
{
    if (entryTitled(entry.title))
        return;
    items.insertAction(items.actions().value(index), makeItem(entry));
    Q_EMIT changed();
}

void StatusMenu::removeEntriesTitled(const QString &title)
{
    while (MenuRow *row = entryTitled(title)) {
        // The entry itself may be what asked.
        items.removeAction(row);
        row->deleteLater();
    }
    Q_EMIT changed();
}

void StatusMenu::validate()
{
    for (QAction *action : items.actions())
        if (!action->menu())
            action->setEnabled(validateItem(action->data().toInt()));
    Q_EMIT changed();
}

} // namespace shell
