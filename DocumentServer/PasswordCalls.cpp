#include "CallTable.h"
#include "PasswordHash.h"
#include "PasswordPolicy.h"

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// The signature covers the exact bytes of the body.
void requireSignature(const Call &call, const QByteArray &salt)
{
    const QByteArray expected = QCryptographicHash::hash(call.bytes + salt, QCryptographicHash::Md5).toHex();
    if (!equalInConstantTime(expected, call.signature.toLatin1().toLower()))
        throw ApiError{SignatureWrong, {}, {}, {}};
}

void requireAcceptable(const QByteArray &password, const Credentials::Checked &checked, const Scenario &scenario)
{
    if (password == checked.password)
        throw ApiError{PasswordUnchanged, {}, {}, {}};
    if (!isAcceptablePassword(password, scenario.flag("enable_strong_pwd")))
        throw ApiError{PasswordTooWeak, {}, {}, {}};
}

QJsonObject changePassword(const Call &call, Services &services)
{
    const QString name = requiredText(call.body, "account", longestAccountName);
    const QString oldPassword = requiredText(call.body, "oldpwd", longestCiphertext);
    const QString newPassword = requiredText(call.body, "newpwd", longestCiphertext);
    requireSignature(call, services.options.passwordChangeSalt);

    const auto gate = services.credentials.gate(name);
    const auto checked = services.credentials.require(name, oldPassword, *call.scenario);
    if (checked.account.isPasswordControlled())
        throw ApiError{PasswordControlled, {}, {}, {}};
    const auto chosen = services.passwordKey.decrypt(newPassword);
    if (!chosen)
        throw ApiError{IllegalParameter, {}, u"parameter: newpwd"_s, {}};
    requireAcceptable(*chosen, checked, *call.scenario);
    QString error;
    if (!services.accounts.setPassword(name, *chosen, services.now(), &error))
        throw ApiError{InternalError, {}, error, {}};
    services.credentials.succeeded(name);
    return {};
}

/// Calls of the password-reset page, which nobody signs in for.
CallEntry pageCall(Services &services, QJsonObject (PasswordReset::*operation)(const Call &))
{
    CallEntry entry{[&services, operation](const Call &call) { return (services.passwordReset.*operation)(call); }};
    entry.needsToken = false;
    entry.isForPages = true;
    return entry;
}
} // namespace

void addPasswordCalls(CallTable *table, Services &services)
{
    table->insert(u"auth1.modifypassword"_s,
                  {[&services](const Call &call) { return changePassword(call, services); }, false});
    table->insert(u"auth1.getvcodesendway"_s, pageCall(services, &PasswordReset::waysOf));
    table->insert(u"auth1.sendvcode"_s, pageCall(services, &PasswordReset::sendCode));
    table->insert(u"auth1.resetpassword"_s, pageCall(services, &PasswordReset::setPassword));
}

} // namespace documentserver
