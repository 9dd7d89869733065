#pragma once

#include <QMenu>
#include <QObject>

#include <functional>

namespace shell
{

/// Tags that tell which rule enables an entry; untagged entries are always enabled.
enum MenuTag {
    NoTag = 0,
    ShowQuillboxWindowTag = 1,
    ShowPreferenceWindowTag = 2,
    PerformLogoutTag = 3,
    PerformQuitAppTag = 4,
    ShowQuillboxWebTag = 5,
    ShowSearchWindowTag = 6,
    ShowTransferWindowTag = 7,
};

struct MenuEntry {
    QString name;  ///< object name of its action
    QString title; ///< for the user
    int tag = NoTag;
    std::function<void()> action; ///< null: the entry keeps its place and is not shown
};

/// The menu behind the status item. Main thread. Entries keep their index whether they are shown or not.
class StatusMenu : public QObject
{
    Q_OBJECT
public:
    explicit StatusMenu(std::function<bool(int tag)> validateUserInterfaceItem, QObject *parent = nullptr);

    QMenu *menu() { return &items; }

    void addEntry(const MenuEntry &entry) { insertEntry(static_cast<int>(items.actions().size()), entry); }
    void addSubmenu(const QString &name, const QString &title, const QList<MenuEntry> &entries);
    /// At `index`, or at the end of a shorter menu. Nothing happens when an entry with this title is there already.
    void insertEntry(int index, const MenuEntry &entry);
    void removeEntriesTitled(const QString &title);

    /// Enables and disables the entries by their tags. Happens by itself before the menu opens.
    void validate();

Q_SIGNALS:
    void changed();

private:
    QAction *makeAction(const MenuEntry &entry, QObject *owner);
    QAction *entryTitled(const QString &title) const;

    const std::function<bool(int)> validateItem;
    QMenu items;
};

} // namespace shell
