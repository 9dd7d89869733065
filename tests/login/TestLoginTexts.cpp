#include "login/ChangePasswordRules.h"
#include "login/LoginErrorText.h"
#include "login/VerifyErrorText.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QMap>

using namespace Qt::StringLiterals;

namespace
{
/// Tables of the test's own.
QString lookUp(const QString &key, const QString &table)
{
    static const QMap<QString, QString> entries = {
        {u"Messages/401003"_s, u"wrong"_s},
        {u"Messages/401020"_s, u"Locked for 1 hour."_s},
        {u"Messages/401035"_s, u"weak"_s},
        {u"Messages/401039"_s, u"wrong code"_s},
        {u"Messages/404029"_s, u"general"_s},
        {u"Messages/LoginFailedBy"_s, u"Failed: "_s},
        {u"Messages/500000"_s, u""_s},
        {u"BackUpMessages/400001"_s, u"backup"_s},
        {u"LoginVerify/404029"_s, u"own"_s},
        {u"LoginVerify/401020"_s, u"锁定一小时"_s},
        {u"LoginVerify/验证码错误次数过多"_s, u"too many"_s},
        {u"Localizable/您输入错误次数超过限制，"_s, u"Too often. "_s},
        {u"Localizable/您输入旧密码错误次数超过限制，"_s, u"Old one too often. "_s},
        {u"Localizable/新密码不符合要求。"_s, u"refused"_s},
    };
    return entries.value(table + u'/' + key, key);
}

QBError error(qint64 code, const QString &lockTime = {})
{
    QVariantMap info{{QBErrorKeys::localizedDescription(), u"said"_s}};
    if (!lockTime.isNull())
        info.insert(QBErrorKeys::lockTime(), lockTime);
    return QBError(QBError::serverDomain(), code, info);
}

QString signIn(const QBError &error)
{
    return LoginErrorText::compose(error, lookUp);
}
QString verification(const QBError &error)
{
    return VerifyErrorText::compose(error, lookUp);
}
QString change(const QBError &error)
{
    return ChangePasswordRules::refusal(error, lookUp);
}

struct Line {
    const char *name;
    QString (*compose)(const QBError &error);
    QBError error;
    QString expected;
};

const QList<Line> errorLines{
    {"known", signIn, error(401003), u"wrong"_s},
    {"in the second table", signIn, error(400001), u"backup"_s},
    {"unknown", signIn, error(9), u"Failed: said"_s},
    {"empty entry", signIn, error(500000), u"Failed: said"_s},
    {"locked", signIn, error(401020, u"25"_s), u"Too often. Locked for 25 minutes."_s},
    {"locked, no time", signIn, error(401020, u""_s), u"Locked for 1 hour."_s},
    {"time of another error", signIn, error(401003, u"25"_s), u"wrong"_s},
    {"verification: own text", verification, error(404029), u"own"_s},
    {"verification: no own text for this one", verification, error(401035), u"weak"_s},
    {"verification: second table", verification, error(400001), u"backup"_s},
    {"verification: locked", verification, error(401020, u"7"_s), u"Too often. 锁定7分钟"_s},
    {"change: wrong", change, error(401003), u"wrong"_s},
    {"change: weak", change, error(401035), u"weak"_s},
    {"change: no entry", change, error(401026), u"401026"_s},
    {"change: locked", change, error(401020, u"3"_s), u"Old one too often. Locked for 3 minutes."_s},
    {"change: any other", change, error(404029), u"refused"_s},
};

struct Passwords {
    const char *name;
    QString from, to, again;
    QString fault;
};

const QList<Passwords> passwordFaults{
    {"all empty", {}, {}, {}, u"旧密码不能为空。"_s},
    {"no new one", u"a"_s, {}, {}, u"新密码不能为空。"_s},
    {"not confirmed", u"a"_s, u"b"_s, {}, u"确认新密码不能为空。"_s},
    {"mismatch before sameness", u"a"_s, u"a"_s, u"b"_s, u"两次输入的密码不一致。"_s},
    {"same as the old one", u"a"_s, u"a"_s, u"a"_s, u"新密码不能和旧密码相同。"_s},
    {"fine", u"a"_s, u"b"_s, u"b"_s, {}},
};
} // namespace

/// The lines that refusals show.
class TestLoginTexts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lines_data() { testing::addCases(errorLines); }
    void lines()
    {
        const auto &[name, compose, error, expected] = testing::currentCase(errorLines);
        QCOMPARE(compose(error), expected);
    }

    void durations()
    {
        QCOMPARE(LoginErrorText::replaceDuration(u"鎖定一小時。"_s, u"5"_s), u"鎖定5分鐘。"_s);
        QCOMPARE(LoginErrorText::replaceDuration(u"locked"_s, u"5"_s), u"locked"_s);
        QCOMPARE(LoginErrorText::replaceDuration(u"1 hour, 一小时"_s, u"%@"_s), u"1 hour, %@分钟"_s);
    }

    void wrongCodes()
    {
        VerifyErrorText::resetWrongCodes();
        for (int attempt = 1; attempt <= 3; ++attempt)
            QCOMPARE(verification(error(401039)), u"wrong code"_s);
        QCOMPARE(verification(error(401003)), u"Failed: said"_s); // is none
        QCOMPARE(verification(error(401056)), u"too many"_s);
        QCOMPARE(verification(error(401039)), u"too many"_s);
        VerifyErrorText::resetWrongCodes();
        QCOMPARE(verification(error(401039)), u"wrong code"_s);
    }

    void changeFaults_data() { testing::addCases(passwordFaults); }
    void changeFaults()
    {
        const auto &[name, from, to, again, fault] = testing::currentCase(passwordFaults);
        QCOMPARE(ChangePasswordRules::firstFault(from, to, again), fault);
    }
};

REGISTER_TEST(TestLoginTexts)
#include "TestLoginTexts.moc"
