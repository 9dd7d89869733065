#pragma once

#include "Call.h"
#include "Services.h"

namespace documentserver
{

/// The rules of a sign-in with account and password, in their order: lock, picture code, password, second factor,
/// password that must be changed.
class SignIn
{
public:
    explicit SignIn(Services &all) : services(all) {}

    /// "auth1" "getnew".
    QJsonObject withPassword(const Call &call);
    /// "auth1" "getbythirdparty".
    QJsonObject withTicket(const Call &call);

private:
    void requirePictureCode(const Call &call, const QString &account);
    void requireSecondFactor(const Call &call, const Account &account);
    void requireOneTimePassword(const Call &call, const Account &account, const QJsonObject &given);
    void requireSentCode(const Call &call, const Account &account, const QJsonObject &given);
    QJsonObject openSession(const Call &call, const Account &account);

    Services &services;
};

} // namespace documentserver
