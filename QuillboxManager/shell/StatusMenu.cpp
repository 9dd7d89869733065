#include "shell/StatusMenu.h"

#include <QAction>

#include <utility>

namespace shell
{

StatusMenu::StatusMenu(std::function<bool(int)> validator, QObject *parent)
    : QObject(parent), validateItem(std::move(validator))
{
    items.setObjectName(QStringLiteral("menu"));
    connect(&items, &QMenu::aboutToShow, this, &StatusMenu::validate);
}

QAction *StatusMenu::makeAction(const MenuEntry &entry, QObject *owner)
{
    auto *action = new QAction(entry.title, owner);
    action->setObjectName(entry.name);
    action->setData(entry.tag);
    action->setMenuRole(QAction::NoRole);
    action->setVisible(static_cast<bool>(entry.action));
    if (entry.action)
        connect(action, &QAction::triggered, this, entry.action);
    return action;
}

QAction *StatusMenu::entryTitled(const QString &title) const
{
    for (QAction *action : items.actions())
        if (action->text() == title)
            return action;
    return nullptr;
}

void StatusMenu::addSubmenu(const QString &name, const QString &title, const QList<MenuEntry> &entries)
{
    QMenu *submenu = items.addMenu(title);
    submenu->setObjectName(name);
    for (const MenuEntry &entry : entries)
        submenu->addAction(makeAction(entry, submenu));
}

void StatusMenu::insertEntry(int index, const MenuEntry &entry)
{
    if (entryTitled(entry.title))
        return;
    items.insertAction(items.actions().value(index), makeAction(entry, &items));
    Q_EMIT changed();
}

void StatusMenu::removeEntriesTitled(const QString &title)
{
    while (QAction *action = entryTitled(title))
        delete action;
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
