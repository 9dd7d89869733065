#include "CallTable.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
QString agreementFlag()
{
    return u"agreedtotermsofuse"_s;
}

/// An account taken out of the file, or disabled, ends its sessions.
Account accountOf(const Call &call, Services &services)
{
    const auto account = services.accounts.find(call.session->account);
    if (!account || account->userid() != call.session->userid)
        throw ApiError{TokenInvalid, {}, {}, {}};
    if (account->isDisabled())
        throw ApiError{AccountDisabled, {}, {}, {}};
    return *account;
}

QJsonObject userInformation(const Call &call, Services &services)
{
    const Account account = accountOf(call, services);
    QJsonObject reply = account.userInformation();
    reply.insert("agreedtotermsofuse"_L1, services.flags.value(account.userid(), agreementFlag()) != 0);
    return reply;
}

QJsonObject agree(const Call &call, Services &services)
{
    services.flags.set(accountOf(call, services).userid(), agreementFlag(), 1);
    return {};
}
} // namespace

void addUserCalls(CallTable *table, Services &services)
{
    table->insert(u"user.get"_s, {[&services](const Call &call) { return userInformation(call, services); }});
    table->insert(u"user.agreedtotermsofuse"_s, {[&services](const Call &call) { return agree(call, services); }});
}

} // namespace documentserver
