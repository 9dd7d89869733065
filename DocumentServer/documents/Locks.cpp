#include "Locks.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
#define LOCK_COLUMNS "node, userid, account, name, life, expires, lockid"

Lock lockOf(const QVariantList &row)
{
    return {row[0].toLongLong(), row[1].toString(),   row[2].toString(), row[3].toString(),
            row[4].toLongLong(), row[5].toLongLong(), row[6].toString()};
}

[[noreturn]] void refuse(ErrorCode code, const Lock &lock)
{
    throw ApiError{code, {}, u"the file is locked by %1(%2)"_s.arg(lock.name, lock.account), {}};
}
} // namespace

std::optional<Lock> findLock(Database &database, qint64 node, qint64 now)
{
    const auto rows =
        database.run("SELECT " LOCK_COLUMNS " FROM locks WHERE node = ? AND (expires < 0 OR expires > ?)", {node, now});
    return rows.isEmpty() ? std::nullopt : std::optional(lockOf(rows[0]));
}

QList<NamedLock> locksInFolder(Database &database, qint64 folder, qint64 now)
{
    QList<Lock> locks;
    database.each("SELECT " LOCK_COLUMNS " FROM locks WHERE (expires < 0 OR expires > ?) AND"
                  " (SELECT parent FROM nodes WHERE id = node) = ?",
                  {now, folder}, [&locks](const QVariantList &row) { locks.append(lockOf(row)); });
    QList<NamedLock> named;
    for (const Lock &lock : std::as_const(locks))
        if (const auto node = findNode(database, lock.node))
            named.append({lock, *node});
    return named;
}

void putLock(Database &database, const Lock &lock)
{
    database.run("INSERT OR REPLACE INTO locks(" LOCK_COLUMNS ") VALUES(?, ?, ?, ?, ?, ?, ?)",
                 {lock.node, lock.userid, lock.account, lock.name, lock.life, lock.expires, lock.lockid});
}

void removeLock(Database &database, qint64 node)
{
    database.run("DELETE FROM locks WHERE node = ?", {node});
}

void requireUnlocked(Database &database, qint64 node, const Caller &caller, qint64 now, ErrorCode code)
{
    const auto lock = findLock(database, node, now);
    if (lock && lock->userid != caller.userid)
        refuse(code, *lock);
}

/// Locks are few: looking where each of them lies costs less than walking through the folder.
void requireUnlockedBelow(Database &database, qint64 folder, const Caller &caller, qint64 now)
{
    QList<Lock> others;
    database.each("SELECT " LOCK_COLUMNS " FROM locks WHERE userid <> ? AND (expires < 0 OR expires > ?)",
                  {caller.userid, now}, [&others](const QVariantList &row) { others.append(lockOf(row)); });
    for (const Lock &lock : std::as_const(others))
        for (const Step &step : stepsTo(database, lock.node))
            if (step.id == folder)
                refuse(ChildLocked, lock);
}

} // namespace documentserver
