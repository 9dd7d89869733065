#pragma once

#include "Place.h"

namespace documentserver
{

/// Who holds a file for himself. A lock belongs to a user, whatever session or device he uses.
struct Lock {
    qint64 node = 0;
    QString userid;
    QString account;
    QString name;
    qint64 life = -1;    ///< seconds; -1: until it is given back
    qint64 expires = -1; ///< microseconds since 1970
    QString lockid;
};

// Changing functions run inside a transaction.

/// Locks that have run out are none.
std::optional<Lock> findLock(Database &database, qint64 node, qint64 now);
/// Of the files directly in the folder, with their names.
struct NamedLock {
    Lock lock;
    Node node;
};
QList<NamedLock> locksInFolder(Database &database, qint64 folder, qint64 now);
/// Gives the lock to the user of `lock`, who may hold it already.
void putLock(Database &database, const Lock &lock);
void removeLock(Database &database, qint64 node);

/// Throws `code` where another user holds the file.
void requireUnlocked(Database &database, qint64 node, const Caller &caller, qint64 now, ErrorCode code = Locked);
/// Throws ChildLocked where another user holds a file anywhere below the folder.
void requireUnlockedBelow(Database &database, qint64 folder, const Caller &caller, qint64 now);

} // namespace documentserver
