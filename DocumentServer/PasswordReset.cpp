#include "PasswordReset.h"

#include "PasswordPolicy.h"

#include <QMessageAuthenticationCode>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// The ways that the scenario allows and the account has, SMS first.
QList<CodeWay> waysFor(const Account &account, const Scenario &scenario)
{
    QList<CodeWay> ways;
    const bool sms = scenario.flag("vcode_server_status.send_vcode_by_sms");
    const bool email = scenario.flag("vcode_server_status.send_vcode_by_email");
    if (!sms && !email)
        throw ApiError{SecondFactorOff, {}, {}, {}};
    if (sms && !account.phone().isEmpty())
        ways.append({u"sms"_s, account.phone(), maskedPhone(account.phone())});
    if (email && !account.mail().isEmpty())
        ways.append({u"email"_s, account.mail(), maskedMail(account.mail())});
    if (ways.isEmpty())
        throw ApiError{NothingBound, {}, {}, {}};
    return ways;
}

CodeWay chosenWay(const QList<CodeWay> &ways, const QString &name)
{
    for (const CodeWay &way : ways)
        if (way.name == name)
            return way;
    throw ApiError{IllegalParameter, {}, u"parameter: way"_s, {}};
}
} // namespace

/// The same for the same name as long as the server keeps its key.
Account PasswordReset::madeUp(const QString &name)
{
    const QByteArray noise = QMessageAuthenticationCode::hash(name.toUtf8(), key.secret(), QCryptographicHash::Sha256);
    QString phone = u"1"_s;
    for (qsizetype i = 0; i < 10; ++i)
        phone += QChar(u'0' + (static_cast<uchar>(noise[i]) % 10));
    phone[1] = QChar(u'3' + (static_cast<uchar>(noise[0]) % 7));
    const QString letter = QChar(u'a' + (static_cast<uchar>(noise[10]) % 26));
    return Account({{u"account"_s, name}, {u"phone"_s, phone}, {u"mail"_s, letter + u'@' + accounts.mailDomain()}});
}

PasswordReset::Person PasswordReset::personOf(const QString &name)
{
    const auto found = accounts.find(name);
    if (found && !found->isDisabled())
        return {*found, true};
    return {madeUp(name), false};
}

QJsonObject PasswordReset::waysOf(const Call &call)
{
    const Person person = personOf(requiredText(call.body, "account", longestAccountName));
    QJsonObject ways;
    for (const CodeWay &way : waysFor(person.account, *call.scenario))
        ways.insert(way.name, way.masked);
    return {{u"ways"_s, ways}, {u"enable_strong_pwd"_s, call.scenario->flag("enable_strong_pwd")}};
}

QJsonObject PasswordReset::sendCode(const Call &call)
{
    const QString name = requiredText(call.body, "account", longestAccountName);
    const QString wanted = requiredText(call.body, "way", longestCode);
    const auto gate = credentials.gate(name);
    credentials.requireUnlocked(name);
    const Person person = personOf(name);
    const CodeWay way = chosenWay(waysFor(person.account, *call.scenario), wanted);
    const SentCodes::Sent sent = codesFor(person).send(name, way, *call.scenario);
    return {
        {u"authway"_s, sent.destination}, {u"sendinterval"_s, sent.interval}, {u"isduplicatesended"_s, sent.duplicate}};
}

QJsonObject PasswordReset::setPassword(const Call &call)
{
    const QString name = requiredText(call.body, "account", longestAccountName);
    const QString code = requiredText(call.body, "vcode", longestCode);
    const auto chosen = key.decrypt(requiredText(call.body, "newpwd", longestCiphertext));
    const auto gate = credentials.gate(name);
    credentials.requireUnlocked(name);
    const Person person = personOf(name);
    waysFor(person.account, *call.scenario); // switched off meanwhile?
    // Before the code, for a right one works once.
    if (!chosen)
        throw ApiError{IllegalParameter, {}, u"parameter: newpwd"_s, {}};
    if (!isAcceptablePassword(*chosen, call.scenario->flag("enable_strong_pwd")))
        throw ApiError{PasswordTooWeak, {}, {}, {}};
    if (!codesFor(person).check(name, code, *call.scenario))
        credentials.refuse(name, WrongCode, *call.scenario);
    if (person.account.isPasswordControlled())
        throw ApiError{PasswordControlled, {}, {}, {}};
    QString error;
    if (!accounts.setPassword(name, *chosen, now(), &error))
        throw ApiError{InternalError, {}, error, {}};
    credentials.succeeded(name);
    sessions.closeAll(person.account.userid());
    return {};
}

} // namespace documentserver
