#include "SignIn.h"

#include "OneTimePassword.h"
#include "PasswordPolicy.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
void requireAllowedClient(const Call &call)
{
    const QJsonObject device = optionalObject(call.body, "deviceinfo");
    if (device.contains("ostype"_L1))
        requiredNumber(device, "ostype", 0, 1000);
    if (call.scenario->flag("client_disabled"))
        throw ApiError{ClientDisabled, {}, {}, {}};
}

void requireFreshPassword(const Credentials::Checked &checked, const Scenario &scenario, qint64 now)
{
    const qint64 changed = checked.account.passwordChanged();
    const qint64 life = scenario.number("password.life_days") * 24 * 3600 * 1000;
    if (checked.account.hasInitialPassword() || (scenario.flag("password.initial_change") && changed == 0))
        throw ApiError{InitialPassword, {}, {}, {}};
    if (life > 0 && now - changed > life)
        throw ApiError{PasswordExpired, {}, {}, {}};
    if (scenario.flag("enable_strong_pwd") && !isAcceptablePassword(checked.password, true))
        throw ApiError{PasswordTooWeak, {}, {}, {}};
}
} // namespace

QJsonObject SignIn::withPassword(const Call &call)
{
    const QString name = requiredText(call.body, "account", longestAccountName);
    const QString password = requiredText(call.body, "password", longestCiphertext);
    optionalObject(call.body, "vcodeinfo");
    optionalObject(call.body, "dualfactorauthinfo");
    requireAllowedClient(call);

    const auto gate = services.credentials.gate(name);
    services.credentials.requireUnlocked(name);
    // A second token for a user who is signed in already asks for the password only.
    const bool isSignedIn = call.session && call.session->account == name;
    if (!isSignedIn)
        requirePictureCode(call, name);
    const Credentials::Checked checked = services.credentials.require(name, password, *call.scenario);
    if (!isSignedIn)
        requireSecondFactor(call, checked.account);
    services.credentials.succeeded(name);
    requireFreshPassword(checked, *call.scenario, services.now());
    return openSession(call, checked.account);
}

void SignIn::requirePictureCode(const Call &call, const QString &account)
{
    if (!services.credentials.needsPictureCode(account, *call.scenario))
        return;
    const QJsonObject given = optionalObject(call.body, "vcodeinfo");
    const QString uuid = optionalText(given, "uuid", longestCode);
    const QString text = optionalText(given, "vcode", longestCode);
    if (text.isEmpty())
        throw ApiError{PictureCodeMissing, {}, {}, {{u"isShowStatus"_s, true}}};
    if (!services.pictureCodes.check(uuid, text, account))
        throw ApiError{PictureCodeWrong, {}, {}, {{u"isShowStatus"_s, true}}};
}

void SignIn::requireSecondFactor(const Call &call, const Account &account)
{
    const Scenario &scenario = *call.scenario;
    const QJsonObject given = optionalObject(call.body, "dualfactorauthinfo");
    if (scenario.flag("dualfactor_auth_server_status.auth_by_OTP"))
        requireOneTimePassword(call, account, optionalObject(given, "OTP"));
    else if (scenario.flag("dualfactor_auth_server_status.auth_by_sms") ||
             scenario.flag("dualfactor_auth_server_status.auth_by_email"))
        requireSentCode(call, account, optionalObject(given, "validcode"));
}

void SignIn::requireOneTimePassword(const Call &call, const Account &account, const QJsonObject &given)
{
    const auto secret = fromBase32(account.otpSecret());
    if (!secret || secret->isEmpty())
        throw ApiError{NothingBound, {}, {}, {}};
    const QString flag = u"lastonetimestep"_s;
    const QString code = optionalText(given, "OTP", longestCode).trimmed();
    if (code.isEmpty()) // not a guess
        throw ApiError{WrongOneTimePassword, {}, {}, {}};
    const auto step = matchingStep(*secret, code, services.now(), services.flags.value(account.userid(), flag));
    if (!step)
        services.credentials.refuse(account.name(), WrongOneTimePassword, *call.scenario);
    services.flags.set(account.userid(), flag, *step);
}

void SignIn::requireSentCode(const Call &call, const Account &account, const QJsonObject &given)
{
    const QString code = optionalText(given, "vcode", longestCode);
    const bool right = !code.isEmpty() && services.secondFactor.check(account.name(), code, *call.scenario);
    if (right)
        return;
    // The client presents the picture code of this attempt again together with the verification code.
    const QJsonObject picture = optionalObject(call.body, "vcodeinfo");
    const qint64 life = call.scenario->number("second_factor.code_life");
    if (services.credentials.needsPictureCode(account.name(), *call.scenario))
        services.pictureCodes.keepFor(account.name(), optionalText(picture, "uuid", longestCode),
                                      optionalText(picture, "vcode", longestCode), life);
    if (code.isEmpty())
        throw ApiError{SecondFactorRequired, {}, {}, {{u"isShowStatus"_s, false}}};
    services.credentials.refuse(account.name(), WrongCode, *call.scenario);
}

QJsonObject SignIn::openSession(const Call &call, const Account &account)
{
    const qint64 life = call.scenario->number("token_life");
    const QString token = services.sessions.open({account.userid(), account.name()}, life);
    return {{u"userid"_s, account.userid()}, {u"tokenid"_s, token}, {u"expires"_s, life}};
}

QJsonObject SignIn::withTicket(const Call &call)
{
    const QString authenticator = requiredText(call.body, "thirdpartyid", longestAccountName);
    const QString ticket = requiredText(requiredObject(call.body, "params"), "ticket", 4096);
    requireAllowedClient(call);
    const QJsonObject configured = call.scenario->object("thirdauth");
    const bool isOurs = configured.value("id"_L1).toString() == authenticator;
    QString name = isOurs ? services.tickets.take(ticket) : QString();
    if (name.isEmpty())
        name = configured.value("tickets"_L1).toObject().value(ticket).toString();
    const auto account = services.accounts.find(name);
    if (!isOurs || name.isEmpty() || !account)
        throw ApiError{TicketRefused, {}, {}, {}};
    if (account->isDisabled())
        throw ApiError{AccountDisabled, {}, {}, {}};
    return openSession(call, *account);
}

} // namespace documentserver
