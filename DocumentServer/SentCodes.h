#pragma once

#include "Outbox.h"
#include "Scenario.h"

#include <QHash>

#include <mutex>

namespace documentserver
{

/// Where a code goes.
struct CodeWay {
    QString name;        ///< "sms" or "email"
    QString destination; ///< as it is
    QString masked;      ///< as it may be shown to anyone
};

/// The destination as it may be shown to anyone: "138****1234", "d***@example.org".
QString maskedPhone(const QString &phone);
QString maskedMail(const QString &mail);

/// Codes by SMS and e-mail for one purpose: one per account, each good for one use. Any thread; in memory only.
class SentCodes
{
public:
    /// Without an outbox nothing is sent, and no code is ever right; all else goes the same way.
    SentCodes(Outbox *out, Clock clock) : outbox(out), now(std::move(clock)) {}

    /// What the caller learns about a code on its way.
    struct Sent {
        QString destination;    ///< masked
        qint64 interval = 0;    ///< seconds until another code may be asked for
        bool duplicate = false; ///< nothing was sent: the last code is recent and still valid
    };
    /// Throws ApiError when the gateway does not take the code, or the last one was sent too recently.
    Sent send(const QString &account, const CodeWay &way, const Scenario &scenario);

    /// Whether the code is the one sent last and still valid; a right one is used up.
    bool check(const QString &account, const QString &code, const Scenario &scenario);

private:
    struct Code {
        QString text; ///< empty once used up
        qint64 sent = 0;
        qint64 expires = 0;
        qint64 wrong = 0;
    };
    Code &last(const QString &account);

    std::mutex mutex;
    Outbox *outbox;
    Clock now;
    QHash<QString, Code> pending;
};

} // namespace documentserver
