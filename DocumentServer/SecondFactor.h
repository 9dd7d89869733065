#pragma once

#include "Account.h"
#include "SentCodes.h"

namespace documentserver
{

/// The codes that finish a sign-in. Any thread.
class SecondFactor
{
public:
    SecondFactor(Outbox &outbox, Clock clock) : codes(&outbox, std::move(clock)) {}

    /// Sends a code the way the scenario and the account allow. Throws ApiError when none can be sent.
    SentCodes::Sent send(const Account &account, const Scenario &scenario);

    /// Whether the code is the one sent last and still valid; a right one is used up.
    bool check(const QString &account, const QString &code, const Scenario &scenario)
    {
        return codes.check(account, code, scenario);
    }

private:
    SentCodes codes;
};

} // namespace documentserver
