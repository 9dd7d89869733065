#pragma once

#include "Database.h"
#include "Sessions.h"

#include <QString>

namespace documentserver
{

/// How often an account may be guessed at.
struct LockRule {
    qint64 after = 5;    ///< wrong attempts that lock the account; 0: never
    qint64 minutes = 60; ///< how long it stays locked
};

/// Counts wrong attempts per account name, known or not, and locks the name for a while. Any thread; survives restarts.
class Attempts
{
public:
    Attempts(Database &storage, Clock clock) : database(storage), now(std::move(clock)) {}

    /// Minutes until the lock ends, rounded up; 0 when the name is not locked.
    qint64 lockedMinutes(const QString &account);
    qint64 wrongCount(const QString &account);
    /// Counts one wrong attempt and locks when it is the last allowed one.
    void countWrong(const QString &account, const LockRule &rule);
    void reset(const QString &account);

private:
    void forgetOld();

    Database &database;
    Clock now;
};

} // namespace documentserver
