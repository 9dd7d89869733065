#pragma once

#include "Account.h"
#include "Outbox.h"
#include "Scenario.h"

#include <QHash>

#include <mutex>

namespace documentserver
{

/// The destination as it may be shown to anyone: "138****1234", "d***@example.org".
QString maskedPhone(const QString &phone);
QString maskedMail(const QString &mail);

/// Codes by SMS or e-mail: one per account, each for one sign-in. Any thread; in memory only.
class SecondFactor
{
public:
    SecondFactor(Outbox &out, Clock clock) : outbox(out), now(std::move(clock)) {}

    /// What the caller learns about a code on its way.
    struct Sent {
        QString destination;    ///< masked
        qint64 interval = 0;    ///< seconds until another code may be asked for
        bool duplicate = false; ///< nothing was sent: the last code is recent and still valid
    };
    /// Sends a code the way the scenario and the account allow. Throws ApiError when none can be sent.
    Sent send(const Account &account, const Scenario &scenario);

    /// Whether the code is the one sent last and still valid; a right one is used up.
    bool check(const QString &account, const QString &code, const Scenario &scenario);

private:
    struct Code {
        QString text; ///< empty once used up
        qint64 sent = 0;
        qint64 expires = 0;
        qint64 wrong = 0;
    };

    std::mutex mutex;
    Outbox &outbox;
    Clock now;
    QHash<QString, Code> pending; ///< bounded by the number of accounts
};

} // namespace documentserver
