#include "login/ChangePasswordRules.h"
#include "login/LoginErrorText.h"
#include "login/VerifyErrorText.h"
#include "support/TestMain.h"

#include <QMap>
#include <QTest>

using namespace Qt::StringLiterals;

/// The lines that refusals show, against tables of the test's own.
class TestLoginTexts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void compose_data();
    void compose();
    void wrongCodes();
    void verification_data();
    void verification();
    void changeFaults_data();
    void changeFaults();
    void changeRefusals_data();
    void changeRefusals();
};

static QString lookUp(const QString &key, const QString &table)
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

static QBError error(qint64 code, const QString &lockTime = {}, const QString &description = u"said"_s)
{
    QVariantMap info{{QBErrorKeys::localizedDescription(), description}};
    if (!lockTime.isNull())
        info.insert(QBErrorKeys::lockTime(), lockTime);
    return QBError(QBError::serverDomain(), code, info);
}

void TestLoginTexts::compose_data()
{
    QTest::addColumn<qint64>("code");
    QTest::addColumn<QString>("lockTime");
    QTest::addColumn<QString>("expected");
    QTest::newRow("known") << qint64(401003) << QString() << u"wrong"_s;
    QTest::newRow("in the second table") << qint64(400001) << QString() << u"backup"_s;
    QTest::newRow("unknown") << qint64(9) << QString() << u"Failed: said"_s;
    QTest::newRow("empty entry") << qint64(500000) << QString() << u"Failed: said"_s;
    QTest::newRow("locked") << qint64(401020) << u"25"_s << u"Too often. Locked for 25 minutes."_s;
    QTest::newRow("locked, no time") << qint64(401020) << u""_s << u"Locked for 1 hour."_s;
    QTest::newRow("time of another error") << qint64(401003) << u"25"_s << u"wrong"_s;
}

void TestLoginTexts::compose()
{
    QFETCH(qint64, code);
    QFETCH(QString, lockTime);
    QTEST(LoginErrorText::compose(error(code, lockTime), lookUp), "expected");
    QCOMPARE(LoginErrorText::replaceDuration(u"锁定一小时。"_s, u"5"_s), u"锁定5分钟。"_s);
    QCOMPARE(LoginErrorText::replaceDuration(u"鎖定一小時。"_s, u"5"_s), u"鎖定5分鐘。"_s);
    QCOMPARE(LoginErrorText::replaceDuration(u"locked"_s, u"5"_s), u"locked"_s);
    QCOMPARE(LoginErrorText::replaceDuration(u"1 hour, 一小时"_s, u"%@"_s), u"1 hour, %@分钟"_s);
}

void TestLoginTexts::wrongCodes()
{
    VerifyErrorText::resetWrongCodes();
    for (int attempt = 1; attempt <= 3; ++attempt)
        QCOMPARE(VerifyErrorText::compose(error(401039), lookUp), u"wrong code"_s);
    QCOMPARE(VerifyErrorText::compose(error(401003), lookUp), u"Failed: said"_s); // is none
    QCOMPARE(VerifyErrorText::compose(error(401056), lookUp), u"too many"_s);
    QCOMPARE(VerifyErrorText::compose(error(401039), lookUp), u"too many"_s);
    VerifyErrorText::resetWrongCodes();
    QCOMPARE(VerifyErrorText::compose(error(401039), lookUp), u"wrong code"_s);
}

void TestLoginTexts::verification_data()
{
    QTest::addColumn<qint64>("code");
    QTest::addColumn<QString>("expected");
    QTest::newRow("own text") << qint64(404029) << u"own"_s;
    QTest::newRow("no own text for this one") << qint64(401035) << u"weak"_s;
    QTest::newRow("second table") << qint64(400001) << u"backup"_s;
    QTest::newRow("locked") << qint64(401020) << u"Too often. 锁定7分钟"_s;
}

void TestLoginTexts::verification()
{
    QFETCH(qint64, code);
    QTEST(VerifyErrorText::compose(error(code, u"7"_s), lookUp), "expected");
}

void TestLoginTexts::changeFaults_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<QString>("again");
    QTest::addColumn<QString>("expected");
    QTest::newRow("all empty") << u""_s << u""_s << u""_s << u"旧密码不能为空。"_s;
    QTest::newRow("no new one") << u"a"_s << u""_s << u""_s << u"新密码不能为空。"_s;
    QTest::newRow("not confirmed") << u"a"_s << u"b"_s << u""_s << u"确认新密码不能为空。"_s;
    QTest::newRow("mismatch before sameness") << u"a"_s << u"a"_s << u"b"_s << u"两次输入的密码不一致。"_s;
    QTest::newRow("same as the old one") << u"a"_s << u"a"_s << u"a"_s << u"新密码不能和旧密码相同。"_s;
    QTest::newRow("fine") << u"a"_s << u"b"_s << u"b"_s << QString();
}

void TestLoginTexts::changeFaults()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(QString, again);
    QTEST(ChangePasswordRules::firstFault(from, to, again), "expected");
}

void TestLoginTexts::changeRefusals_data()
{
    QTest::addColumn<qint64>("code");
    QTest::addColumn<QString>("expected");
    QTest::newRow("401003") << qint64(401003) << u"wrong"_s;
    QTest::newRow("401035") << qint64(401035) << u"weak"_s;
    QTest::newRow("401026, no entry") << qint64(401026) << u"401026"_s;
    QTest::newRow("locked") << qint64(401020) << u"Old one too often. Locked for 3 minutes."_s;
    QTest::newRow("any other") << qint64(404029) << u"refused"_s;
}

void TestLoginTexts::changeRefusals()
{
    QFETCH(qint64, code);
    QTEST(ChangePasswordRules::refusal(error(code, u"3"_s), lookUp), "expected");
}

REGISTER_TEST(TestLoginTexts)
#include "TestLoginTexts.moc"
