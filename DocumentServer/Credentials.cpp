#include "Credentials.h"

#include "ApiError.h"
#include "PasswordHash.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

std::unique_lock<std::mutex> Credentials::gate(const QString &account)
{
    return std::unique_lock(gates[qHash(account) % gates.size()]);
}

void Credentials::requireUnlocked(const QString &account)
{
    const qint64 minutes = attempts.lockedMinutes(account);
    if (minutes > 0)
        throw ApiError{AccountLocked, {}, {}, {{u"remainlockTime"_s, QString::number(minutes)}}};
}

Credentials::Checked Credentials::require(const QString &account, const QString &encryptedPassword,
                                          const Scenario &scenario)
{
    return requirePlain(account, key.decrypt(encryptedPassword).value_or(QByteArray()), scenario);
}

Credentials::Checked Credentials::requirePlain(const QString &account, const QByteArray &password,
                                               const Scenario &scenario)
{
    requireUnlocked(account);
    // A broken ciphertext and an unknown account go the same way, at the same cost, as a wrong password.
    const auto found = accounts.find(account);
    const bool fits = passwordFits(password, found ? found->hash() : QString(), accounts.passwordCost());
    if (!fits || password.isEmpty())
        refuse(account, WrongPassword, scenario);
    if (found->isDisabled())
        throw ApiError{AccountDisabled, {}, {}, {}};
    return {*found, password};
}

void Credentials::refuse(const QString &account, int code, const Scenario &scenario)
{
    attempts.countWrong(account, {scenario.number("lock.after"), scenario.number("lock.minutes")});
    requireUnlocked(account);
    const bool picture = needsPictureCode(account, scenario);
    throw ApiError{code, {}, {}, picture ? QJsonObject{{u"isShowStatus"_s, true}} : QJsonObject()};
}

bool Credentials::needsPictureCode(const QString &account, const Scenario &scenario)
{
    return scenario.flag("vcode_login_config.isenable") &&
           attempts.wrongCount(account) >= scenario.number("vcode_login_config.passwderrcnt");
}

} // namespace documentserver
