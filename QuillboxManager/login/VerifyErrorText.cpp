#include "login/VerifyErrorText.h"

#include <QSet>

namespace VerifyErrorText
{

namespace
{
constexpr unsigned ToleratedWrongCodes = 3;
unsigned wrongCodes = 0;

QStringList tablesFor(qint64 code)
{
    static const QSet<qint64> own = {401003, 401004, 401009, 401011, 401020, 401021, 401031, 404029};
    const QString first = own.contains(code) ? QStringLiteral("LoginVerify") : QStringLiteral("Messages");
    return {first, QStringLiteral("BackUpMessages")};
}

bool isWrongCode(qint64 code)
{
    return code == 401039 || code == 401056;
}
} // namespace

void resetWrongCodes()
{
    wrongCodes = 0;
}

QString compose(const QBError &error, const LoginErrorText::Lookup &lookup)
{
    if (isWrongCode(error.code()) && wrongCodes++ >= ToleratedWrongCodes)
        return lookup(QStringLiteral("验证码错误次数过多"), QStringLiteral("LoginVerify"));
    const QString text = LoginErrorText::textForCode(error, tablesFor(error.code()), lookup);
    return LoginErrorText::rewriteLockTime(text, error, QStringLiteral("您输入错误次数超过限制，"), lookup);
}

} // namespace VerifyErrorText
