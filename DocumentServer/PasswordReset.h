#pragma once

#include "Call.h"
#include "Credentials.h"
#include "SentCodes.h"

namespace documentserver
{

/// Forgotten passwords: a code by SMS or e-mail stands for the old one. Names that no account has, or a disabled one,
/// get the same answers as others with ways made up for them, so that nobody learns from here which accounts exist.
/// Any thread.
class PasswordReset
{
public:
    PasswordReset(Accounts &known, Credentials &guard, PasswordKey &passwordKey, Sessions &open, Outbox &outbox,
                  Clock clock)
        : accounts(known), credentials(guard), key(passwordKey), sessions(open), now(clock), codes(&outbox, clock),
          madeUpCodes(nullptr, clock)
    {
    }

    /// "auth1" "getvcodesendway".
    QJsonObject waysOf(const Call &call);
    /// "auth1" "sendvcode".
    QJsonObject sendCode(const Call &call);
    /// "auth1" "resetpassword".
    QJsonObject setPassword(const Call &call);

private:
    /// Who the answers are about; `isReal` tells whether a code is sent.
    struct Person {
        Account account;
        bool isReal = false;
    };
    Person personOf(const QString &name);
    Account madeUp(const QString &name);
    SentCodes &codesFor(const Person &person) { return person.isReal ? codes : madeUpCodes; }

    Accounts &accounts;
    Credentials &credentials;
    PasswordKey &key;
    Sessions &sessions;
    Clock now;
    SentCodes codes;
    SentCodes madeUpCodes;
};

} // namespace documentserver
