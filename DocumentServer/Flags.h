#pragma once

#include "Database.h"

#include <QString>

namespace documentserver
{

/// Small numbers remembered per user: the agreement, the quick start, the last one-time password. Any thread.
class Flags
{
public:
    explicit Flags(Database &storage) : database(storage) {}

    /// 0 when it was never set.
    qint64 value(const QString &userid, const QString &name)
    {
        const auto rows = database.run("SELECT value FROM flags WHERE userid = ? AND name = ?", {userid, name});
        return rows.isEmpty() ? 0 : rows[0][0].toLongLong();
    }

    void set(const QString &userid, const QString &name, qint64 value)
    {
        database.run("INSERT OR REPLACE INTO flags(userid, name, value) VALUES(?, ?, ?)", {userid, name, value});
    }

private:
    Database &database;
};

} // namespace documentserver
