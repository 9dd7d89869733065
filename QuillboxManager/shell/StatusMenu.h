#pragma once

#include <QMenu>
#include <QObject>

#include <functional>

class MenuRow;
class QBMenuItem;

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
    QString title; ///< names the entry for the application; what the user reads comes from the table of the menu
    int tag = NoTag;
    std::function<void()> action;
    QString mainString = {}; ///< base name of pictures and texts; null: recognised by the title
};

/// The menu behind the status item, made of entries that draw themselves. Main thread.
class StatusMenu : public QObject
{
    Q_OBJECT
public:
    explicit StatusMenu(std::function<bool(int tag)> validateUserInterfaceItem, QObject *parent = nullptr);

    QMenu *menu() { return &items; }

    void addEntry(const MenuEntry &entry) { insertEntry(static_cast<int>(items.actions().size()), entry); }
    /// An entry that opens a menu of its own.
    void addSubmenu(const MenuEntry &entry, const QList<MenuEntry> &entries);
    /// At `index`, or at the end of a shorter menu. Nothing happens when an entry with this title is there already.
    void insertEntry(int index, const MenuEntry &entry);
    void removeEntriesTitled(const QString &title);

    /// Enables and disables the entries by their tags. Happens by itself before the menu opens.
    void validate();

Q_SIGNALS:
    void changed();

private:
    MenuRow *entryTitled(const QString &title) const;

    QBMenuItem *makeItem(const MenuEntry &entry);

    const std::function<bool(int)> validateItem;
    QMenu items;
};

} // namespace shell
