#pragma once

#include "Database.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace documentserver
{

using Clock = std::function<qint64()>; ///< milliseconds since 1970

/// Who a token belongs to.
struct Session {
    QString userid;
    QString account;
};

/// The tokens in force. Only their digests are stored, so that a copy of the storage opens no session. Any thread.
class Sessions
{
public:
    Sessions(Database &storage, Clock clock) : database(storage), now(std::move(clock)) {}

    /// Opens a session of `life` seconds and returns its token. A user keeps at most the newest 50 sessions.
    QString open(const Session &session, qint64 life);
    std::optional<Session> find(const QString &token);
    /// Lets the session live `life` seconds from now.
    void extend(const QString &token, qint64 life);
    void close(const QString &token);
    void closeAll(const QString &userid);

private:
    void forgetOld(const QString &userid);

    Database &database;
    Clock now;
};

} // namespace documentserver
