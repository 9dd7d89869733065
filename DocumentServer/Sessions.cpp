#include "Sessions.h"

#include "PasswordHash.h"

#include <QCryptographicHash>

namespace documentserver
{

namespace
{
constexpr qsizetype longestToken = 128;

QByteArray digest(const QString &token)
{
    return QCryptographicHash::hash(token.toUtf8(), QCryptographicHash::Sha256);
}
} // namespace

QString Sessions::open(const Session &session, qint64 life)
{
    const QString token = QString::fromLatin1(randomBytes(24).toHex());
    const auto lock = database.exclusive();
    forgetOld(session.userid);
    database.run("INSERT INTO sessions(token, userid, account, expires, made) VALUES(?, ?, ?, ?, ?)",
                 {digest(token), session.userid, session.account, now() + life * 1000, now()});
    return token;
}

void Sessions::forgetOld(const QString &userid)
{
    database.run("DELETE FROM sessions WHERE expires <= ?", {now()});
    database.run("DELETE FROM sessions WHERE userid = ?1 AND token NOT IN"
                 " (SELECT token FROM sessions WHERE userid = ?1 ORDER BY made DESC LIMIT 49)",
                 {userid});
}

std::optional<Session> Sessions::find(const QString &token)
{
    if (token.isEmpty() || token.size() > longestToken)
        return std::nullopt;
    const auto rows =
        database.run("SELECT userid, account FROM sessions WHERE token = ? AND expires > ?", {digest(token), now()});
    if (rows.isEmpty())
        return std::nullopt;
    return Session{rows[0][0].toString(), rows[0][1].toString()};
}

void Sessions::extend(const QString &token, qint64 life)
{
    database.run("UPDATE sessions SET expires = ? WHERE token = ?", {now() + life * 1000, digest(token)});
}

void Sessions::close(const QString &token)
{
    database.run("DELETE FROM sessions WHERE token = ?", {digest(token)});
}

void Sessions::closeAll(const QString &userid)
{
    database.run("DELETE FROM sessions WHERE userid = ?", {userid});
}

} // namespace documentserver
