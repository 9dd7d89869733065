#include "login/ChangePasswordRules.h"

#include "login/LoginOutcome.h"

namespace ChangePasswordRules
{

namespace
{
constexpr qint64 WrongPassword = 401003;
constexpr qint64 PasswordMayNotChange = 401026;
constexpr qint64 PasswordTooWeak = 401035;
} // namespace

QString firstFault(const QString &oldPassword, const QString &newPassword, const QString &confirmation)
{
    if (oldPassword.isEmpty())
        return QStringLiteral("旧密码不能为空。");
    if (newPassword.isEmpty())
        return QStringLiteral("新密码不能为空。");
    if (confirmation.isEmpty())
        return QStringLiteral("确认新密码不能为空。");
    if (newPassword != confirmation)
        return QStringLiteral("两次输入的密码不一致。");
    if (newPassword == oldPassword)
        return QStringLiteral("新密码不能和旧密码相同。");
    return {};
}

bool isAccountLocked(const QBError &error)
{
    return error.code() == LoginOutcome::AccountLocked;
}

QString refusal(const QBError &error, const LoginErrorText::Lookup &lookup)
{
    const QString entry = lookup(QString::number(error.code()), QStringLiteral("Messages"));
    switch (error.code()) {
    case WrongPassword:
    case PasswordMayNotChange:
    case PasswordTooWeak:
        return entry;
    case LoginOutcome::AccountLocked:
        // Said also when the server does not tell how long the lock lasts.
        return lookup(QStringLiteral("您输入旧密码错误次数超过限制，"), QStringLiteral("Localizable")) +
               (error.lockTime().isEmpty() ? entry : LoginErrorText::replaceDuration(entry, error.lockTime()));
    default:
        return lookup(QStringLiteral("新密码不符合要求。"), QStringLiteral("Localizable"));
    }
}

} // namespace ChangePasswordRules
