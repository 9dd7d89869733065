#include "SecondFactor.h"

#include "ApiError.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// SMS goes before e-mail where both are on and bound.
CodeWay wayFor(const Account &account, const Scenario &scenario)
{
    const bool sms = scenario.flag("dualfactor_auth_server_status.auth_by_sms");
    const bool email = scenario.flag("dualfactor_auth_server_status.auth_by_email");
    if (!sms && !email)
        throw ApiError{SecondFactorOff, {}, {}, {}};
    if (sms && !account.phone().isEmpty())
        return {u"sms"_s, account.phone(), maskedPhone(account.phone())};
    if (email && !account.mail().isEmpty())
        return {u"email"_s, account.mail(), maskedMail(account.mail())};
    throw ApiError{NothingBound, {}, {}, {}};
}
} // namespace

SentCodes::Sent SecondFactor::send(const Account &account, const Scenario &scenario)
{
    return codes.send(account.name(), wayFor(account, scenario), scenario);
}

} // namespace documentserver
