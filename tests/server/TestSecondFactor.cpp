#include "server/ServerFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include "DocumentServer/OneTimePassword.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
QJsonObject factor(const QString &way, const QJsonObject &more = {})
{
    QJsonObject scenario{{u"dualfactor_auth_server_status"_s, QJsonObject{{way, true}}}};
    if (!more.isEmpty())
        scenario.insert(u"second_factor"_s, more);
    return scenario;
}

Answer requestCode(const ServerFixture &fixture, const QString &password = demoPassword())
{
    return fixture.call(u"auth1.sendauthvcode"_s, {{u"account"_s, demoName()},
                                                   {u"password"_s, fixture.encrypted(password)},
                                                   {u"oldtelnum"_s, u""_s},
                                                   {u"deviceinfo"_s, QJsonObject{{u"ostype"_s, 5}}}});
}

Answer signInWith(const ServerFixture &fixture, const QString &code, const QJsonObject &picture = {})
{
    return fixture.signIn(demoName(), demoPassword(), picture, {{u"validcode"_s, QJsonObject{{u"vcode"_s, code}}}});
}

Answer signInWithOneTimePassword(const ServerFixture &fixture, const QString &code)
{
    return fixture.signIn(demoName(), demoPassword(), {}, {{u"OTP"_s, QJsonObject{{u"OTP"_s, code}}}});
}

QString currentOneTimePassword(const ServerFixture &fixture)
{
    using namespace documentserver;
    return counterCode(*fromBase32(u"KF2WS3DMMJXXQLLEMVWW6LLPNZSQ"_s), quint64(timeStep(fixture.time)));
}
} // namespace

class TestSecondFactor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codeOnItsWay_data()
    {
        const testing::Rows<QString, QString, QString> row("setting", "way", "shown");
        row("sms", "auth_by_sms", "sms", "138****1234");
        row("email", "auth_by_email", "email", "d***@example.org");
    }
    void codeOnItsWay()
    {
        QFETCH(QString, setting);
        const ServerFixture fixture(factor(setting));
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401037);
        const Answer sent = requestCode(fixture);
        QTEST(sent.text("authway"), "shown");
        QCOMPARE(sent.number("sendinterval"), 60);
        QCOMPARE(sent.json.value("isduplicatesended"_L1), QJsonValue(false));

        const auto codes = fixture.server->sentCodes();
        QCOMPARE(codes.size(), 1);
        QTEST(codes[0].way, "way");
        QFile file(fixture.folder() + "/codes"_L1);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(file.readLine()).object().value("code"_L1).toString(), codes[0].code);
        QCOMPARE(QFileInfo(file).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
                 QFile::ReadOwner | QFile::WriteOwner);

        QCOMPARE(signInWith(fixture, codes[0].code).status, 200);
        QCOMPARE(signInWith(fixture, codes[0].code).code(), 401039);
    }

    void resendInterval()
    {
        ServerFixture fixture(factor(u"auth_by_sms"_s));
        QCOMPARE(requestCode(fixture).status, 200);
        fixture.pass(20);
        const Answer again = requestCode(fixture);
        QCOMPARE(again.json.value("isduplicatesended"_L1), QJsonValue(true));
        QCOMPARE(again.number("sendinterval"), 40);
        QCOMPARE(fixture.server->sentCodes().size(), 1);
        QCOMPARE(signInWith(fixture, fixture.server->sentCodes().last().code).status, 200);
        QCOMPARE(requestCode(fixture).code(), 401059);
        fixture.pass(40);
        QCOMPARE(requestCode(fixture).json.value("isduplicatesended"_L1), QJsonValue(false));
        QCOMPARE(fixture.server->sentCodes().size(), 2);
    }

    void codesEnd()
    {
        ServerFixture fixture(factor(u"auth_by_sms"_s, {{u"code_life"_s, 90}, {u"wrong_codes"_s, 2}}));
        requestCode(fixture);
        fixture.pass(90);
        QCOMPARE(signInWith(fixture, fixture.server->sentCodes().last().code).code(), 401039);
        requestCode(fixture);
        const QString code = fixture.server->sentCodes().last().code;
        QCOMPARE(signInWith(fixture, u"abcdef"_s).code(), 401039);
        QCOMPARE(signInWith(fixture, u"abcdef"_s).code(), 401039);
        QCOMPARE(signInWith(fixture, code).code(), 401039);
        // The fifth failure locks the account: codes cannot be guessed without end.
        QCOMPARE(signInWith(fixture, code).code(), 401020);
    }

    void sendingFails_data()
    {
        const testing::Rows<QJsonObject, int> row("scenario", "code");
        row("off", {}, 401064);
        row("sms down", factor(u"auth_by_sms"_s, {{u"sms"_s, u"down"_s}}), 404029);
        row("mail down", factor(u"auth_by_email"_s, {{u"email"_s, u"down"_s}}), 404031);
        row("sms refused", factor(u"auth_by_sms"_s, {{u"sms"_s, u"refuse"_s}}), 403058);
        row("mail refused", factor(u"auth_by_email"_s, {{u"email"_s, u"refuse"_s}}), 403058);
        row("sms fine", factor(u"auth_by_sms"_s, {{u"email"_s, u"down"_s}}), 0);
    }
    void sendingFails()
    {
        QFETCH(QJsonObject, scenario);
        const ServerFixture fixture(scenario);
        if (!scenario.isEmpty())
            QCOMPARE(requestCode(fixture, u"x"_s).code(), 401003);
        const Answer answer = requestCode(fixture);
        QTEST(answer.code(), "code");
        QCOMPARE(fixture.server->sentCodes().size(), answer.status == 200 ? 1 : 0);
    }

    void nothingBound()
    {
        ServerFixture fixture(factor(u"auth_by_sms"_s));
        QVERIFY(fixture.useAccounts("{\"account\":\"demo\",\"password\":\"Quillbox-demo1\",\"mail\":\"a@b\"}"));
        QCOMPARE(requestCode(fixture).code(), 401058);
        QVERIFY(fixture.useScenario(factor(u"auth_by_OTP"_s)));
        QCOMPARE(signInWithOneTimePassword(fixture, u"123456"_s).code(), 401058);
    }

    /// The picture code of the first attempt comes again with the verification code.
    void pictureCodeAndVerificationCode()
    {
        QJsonObject scenario = factor(u"auth_by_sms"_s);
        scenario.insert(u"vcode_login_config"_s, QJsonObject{{u"isenable"_s, true}, {u"passwderrcnt"_s, 0}});
        const ServerFixture fixture(scenario);
        const QString uuid = fixture.call(u"auth1.getvcode"_s).text("uuid");
        const QJsonObject picture{{u"uuid"_s, uuid}, {u"vcode"_s, fixture.server->pictureCodeText(uuid)}};
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), picture).code(), 401037);
        requestCode(fixture);
        QCOMPARE(signInWith(fixture, u"abcdef"_s, picture).code(), 401039);
        QCOMPARE(signInWith(fixture, fixture.server->sentCodes().last().code, picture).status, 200);
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), picture).code(), 401031);
    }

    void oneTimePasswords()
    {
        ServerFixture fixture(factor(u"auth_by_OTP"_s));
        for (int i = 0; i < 6; ++i) // nothing given is no guess
            QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401056);
        const QString code = currentOneTimePassword(fixture);
        QCOMPARE(signInWithOneTimePassword(fixture, code).status, 200);
        QCOMPARE(signInWithOneTimePassword(fixture, code).code(), 401056);
        fixture.pass(30);
        const QString next = currentOneTimePassword(fixture);
        fixture.pass(60);
        QCOMPARE(signInWithOneTimePassword(fixture, next).code(), 401056);
        fixture.pass(30);
        // Used codes stay used over a restart.
        const QString last = currentOneTimePassword(fixture);
        QCOMPARE(signInWithOneTimePassword(fixture, last).status, 200);
        QVERIFY(fixture.restart() && fixture.useScenario(factor(u"auth_by_OTP"_s)));
        QCOMPARE(signInWithOneTimePassword(fixture, last).code(), 401056);
    }
};

REGISTER_TEST(TestSecondFactor)
#include "TestSecondFactor.moc"
