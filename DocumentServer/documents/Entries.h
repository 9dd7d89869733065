#pragma once

#include "DocumentServer/Account.h"
#include "Tree.h"

namespace documentserver
{

// The entry documents. Changing functions run inside a transaction.

/// Makes the entries that everybody shares, where they are missing.
void ensureCommonEntries(Database &database, qint64 now);
/// Whether the account's own entry is there and has the user's present name.
bool hasOwnEntry(Database &database, const Account &account);
/// Makes the account's own entry, or gives it the user's present name.
void ensureOwnEntry(Database &database, const Account &account, qint64 now);

/// Those of the user and everybody's, by type.
QList<Entry> entriesOf(Database &database, const QString &userid);
std::optional<Entry> findEntry(Database &database, qint64 root);
void changeUsed(Database &database, qint64 root, qint64 bytes);

QJsonObject recordOf(const Entry &entry, const Node &root, const QString &ownerName);
/// The name of a kind of entry, as clients get it.
QString entryTypeName(int type);
/// The account's name for others to read.
QString displayNameOf(const Account &account);

} // namespace documentserver
