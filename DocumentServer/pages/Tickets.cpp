#include "Tickets.h"

#include "../PasswordHash.h"

namespace documentserver
{

namespace
{
constexpr qint64 life = 120'000; // milliseconds
constexpr qsizetype mostTickets = 10'000;
} // namespace

QString Tickets::make(const QString &account)
{
    const QString ticket = QStringLiteral("ST-") + QString::fromLatin1(randomBytes(16).toHex());
    const std::lock_guard lock(mutex);
    entries.removeIf([this](const QHash<QString, Entry>::iterator &it) { return it->expires <= now(); });
    if (entries.size() >= mostTickets)
        entries.clear();
    entries.insert(ticket, {account, now() + life});
    return ticket;
}

QString Tickets::take(const QString &ticket)
{
    const std::lock_guard lock(mutex);
    const Entry entry = entries.take(ticket);
    return entry.expires > now() ? entry.account : QString();
}

} // namespace documentserver
