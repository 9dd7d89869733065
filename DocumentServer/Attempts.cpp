#include "Attempts.h"

namespace documentserver
{

qint64 Attempts::lockedMinutes(const QString &account)
{
    const auto rows = database.run("SELECT lockeduntil FROM attempts WHERE account = ?", {account});
    const qint64 remaining = rows.isEmpty() ? 0 : rows[0][0].toLongLong() - now();
    return remaining > 0 ? (remaining + 59'999) / 60'000 : 0;
}

qint64 Attempts::wrongCount(const QString &account)
{
    const auto rows = database.run("SELECT wrong FROM attempts WHERE account = ?", {account});
    return rows.isEmpty() ? 0 : rows[0][0].toLongLong();
}

void Attempts::countWrong(const QString &account, const LockRule &rule)
{
    const auto lock = database.exclusive();
    forgetOld();
    const bool locks = rule.after > 0 && wrongCount(account) + 1 >= rule.after;
    const qint64 until = locks ? now() + rule.minutes * 60'000 : 0;
    // A lock starts a new count: after it has ended, as many attempts are allowed as before.
    database.run("INSERT INTO attempts(account, wrong, lockeduntil, changed) VALUES(?1, ?2, ?3, ?4)"
                 " ON CONFLICT(account) DO UPDATE SET wrong = ?2, lockeduntil = ?3, changed = ?4",
                 {account, locks ? qint64(0) : wrongCount(account) + 1, until, now()});
}

void Attempts::reset(const QString &account)
{
    database.run("DELETE FROM attempts WHERE account = ?", {account});
}

/// Guesses at made-up names must not fill the disk.
void Attempts::forgetOld()
{
    const qint64 count = database.run("SELECT count(*) FROM attempts").at(0).at(0).toLongLong();
    if (count >= 10'000)
        database.run("DELETE FROM attempts WHERE lockeduntil <= ? AND account IN"
                     " (SELECT account FROM attempts ORDER BY changed LIMIT 1000)",
                     {now()});
}

} // namespace documentserver
