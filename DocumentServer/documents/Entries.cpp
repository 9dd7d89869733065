#include "Entries.h"

#include "DocumentServer/PasswordHash.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr int personalType = 1;
constexpr std::array commonEntries = std::to_array<std::pair<int, const char *>>({
    {2, "Team"},
    {3, "Library"},
    {4, "Shared with me"},
    {5, "Archive"},
    {6, "Projects"},
    {7, "Catalogue"},
});
constexpr std::array typeNames =
    std::to_array<const char *>({"", "personal", "group", "library", "shared", "archive", "sharegroup", "catalogue"});

#define ENTRY_COLUMNS "root, key, name, type, owner, used"

Entry entryOf(const QVariantList &row)
{
    return {row[0].toLongLong(),      row[1].toString(), row[2].toString(),
            int(row[3].toLongLong()), row[4].toString(), row[5].toLongLong()};
}

void insertEntry(Database &database, int type, const QString &name, const QString &owner, qint64 now)
{
    Node root;
    root.home = QString::fromLatin1(randomBytes(8).toHex());
    root.name = name;
    root.modified = root.clientModified = root.created = now;
    insertNode(database, &root);
    database.run("INSERT INTO entries(" ENTRY_COLUMNS ") VALUES(?, ?, ?, ?, ?, 0)",
                 {root.id, root.home, name, type, owner});
}
} // namespace

QString entryTypeName(int type)
{
    return QString::fromLatin1(typeNames.at(static_cast<size_t>(type)));
}

QString displayNameOf(const Account &account)
{
    return account.displayName().isEmpty() ? account.name() : account.displayName();
}

void ensureCommonEntries(Database &database, qint64 now)
{
    for (const auto &[type, name] : commonEntries)
        if (database.run("SELECT 1 FROM entries WHERE owner = '' AND type = ?", {type}).isEmpty())
            insertEntry(database, type, QString::fromLatin1(name), u""_s, now);
}

bool hasOwnEntry(Database &database, const Account &account)
{
    return !database
                .run("SELECT 1 FROM entries WHERE owner = ? AND name = ?", {account.userid(), displayNameOf(account)})
                .isEmpty();
}

void ensureOwnEntry(Database &database, const Account &account, qint64 now)
{
    const QString name = displayNameOf(account);
    const auto rows = database.run("SELECT root FROM entries WHERE owner = ?", {account.userid()});
    if (rows.isEmpty())
        return insertEntry(database, personalType, name, account.userid(), now);
    database.run("UPDATE entries SET name = ? WHERE root = ?", {name, rows[0][0]});
    database.run("UPDATE nodes SET name = ?, tag = ? WHERE id = ?", {name, newTag(), rows[0][0]});
}

QList<Entry> entriesOf(Database &database, const QString &userid)
{
    QList<Entry> entries;
    database.each("SELECT " ENTRY_COLUMNS " FROM entries WHERE owner = '' OR owner = ? ORDER BY type, root", {userid},
                  [&entries](const QVariantList &row) { entries.append(entryOf(row)); });
    return entries;
}

std::optional<Entry> findEntry(Database &database, qint64 root)
{
    const auto rows = database.run("SELECT " ENTRY_COLUMNS " FROM entries WHERE root = ?", {root});
    return rows.isEmpty() ? std::nullopt : std::optional(entryOf(rows[0]));
}

void changeUsed(Database &database, qint64 root, qint64 bytes)
{
    database.run("UPDATE entries SET used = used + ? WHERE root = ?", {bytes, root});
}

QJsonObject recordOf(const Entry &entry, const Node &root, const QString &ownerName)
{
    return {{u"docid"_s, docidOf(entry)},
            {u"docname"_s, entry.name},
            {u"doctype"_s, entry.type},
            {u"typename"_s, entryTypeName(entry.type)},
            {u"size"_s, -1},
            {u"attr"_s, 0},
            {u"rev"_s, revisionText(root.tag)},
            {u"otag"_s, revisionText(root.tag)},
            {u"modified"_s, root.modified},
            {u"type"_s, 0},
            {u"owner"_s, ownerName}};
}

} // namespace documentserver
