#pragma once

#include "../Sessions.h"

#include <QHash>
#include <QString>

#include <mutex>

namespace documentserver
{

/// Single-sign-on tickets: made when somebody has signed in on a page, good for one exchange within two minutes. Any
/// thread; in memory only.
class Tickets
{
public:
    explicit Tickets(Clock clock) : now(std::move(clock)) {}

    QString make(const QString &account);
    /// The account; null when there is no such ticket, or none any more.
    QString take(const QString &ticket);

private:
    struct Entry {
        QString account;
        qint64 expires = 0;
    };

    std::mutex mutex;
    Clock now;
    QHash<QString, Entry> entries;
};

} // namespace documentserver
