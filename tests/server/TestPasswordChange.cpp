#include "server/ServerFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPasswordChange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void change()
    {
        ServerFixture fixture({{u"password"_s, QJsonObject{{u"initial_change"_s, true}, {u"life_days"_s, 30}}}});
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401012);
        QCOMPARE(fixture.changePassword(demoName(), demoPassword(), u"Another-1"_s).status, 200);
        QCOMPARE(fixture.signIn(demoName(), u"Another-1"_s).status, 200);
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401003);
        fixture.pass(30 * 24 * 3600 + 1);
        QCOMPARE(fixture.signIn(demoName(), u"Another-1"_s).code(), 401013);
    }

    void refusals_data()
    {
        const testing::Rows<QString, QString, bool, int> row("oldPassword", "newPassword", "strong", "code");
        const QString old = demoPassword();
        row("wrong old", "x", "Another-1", false, 401003);
        row("unchanged", old, old, false, 401035);
        row("empty", old, {}, false, 401017);
        row("weak is enough", old, "abcdef", false, 0);
        row("weak is not enough", old, "abcdef", true, 401017);
        row("strong", old, "Abcdef-1", true, 0);
    }
    void refusals()
    {
        QFETCH(QString, oldPassword);
        QFETCH(QString, newPassword);
        QFETCH(bool, strong);
        const ServerFixture fixture({{u"enable_strong_pwd"_s, strong}});
        const Answer answer = fixture.changePassword(demoName(), oldPassword, newPassword);
        QTEST(answer.code(), "code");
        QCOMPARE(fixture.signIn(demoName(), answer.status == 200 ? newPassword : demoPassword()).status, 200);
    }

    /// The signature covers every byte of the body as sent.
    void signatures()
    {
        const ServerFixture fixture;
        const QByteArray body = QJsonDocument(QJsonObject{{u"account"_s, demoName()},
                                                          {u"oldpwd"_s, fixture.encrypted(demoPassword())},
                                                          {u"newpwd"_s, fixture.encrypted(u"Another-1"_s)}})
                                    .toJson();
        const auto code = [&](const QByteArray &sign, const QByteArray &sent) {
            return fixture.post("/api/v1/auth1?method=modifypassword&sign="_L1 + QString::fromLatin1(sign), sent)
                .code();
        };
        const auto signedWith = [&body](const char *salt) {
            return QCryptographicHash::hash(body + salt, QCryptographicHash::Md5).toHex();
        };
        QCOMPARE(fixture.post(u"/api/v1/auth1?method=modifypassword"_s, body).code(), 401038);
        QCOMPARE(code(signedWith("qvxzt.kmn"), body + " "), 401038);
        QCOMPARE(code(signedWith("qvxzt.kmm"), body), 401038);
        QCOMPARE(code(signedWith(""), body), 401038);
        QCOMPARE(code(signedWith("qvxzt.kmn").toUpper(), body), 0);
    }

    void wrongOldPasswordLocks()
    {
        const ServerFixture fixture({{u"lock"_s, QJsonObject{{u"after"_s, 2}, {u"minutes"_s, 7}}}});
        QCOMPARE(fixture.changePassword(demoName(), u"x"_s, u"Another-1"_s).code(), 401003);
        const Answer locked = fixture.changePassword(demoName(), u"x"_s, u"Another-1"_s);
        QCOMPARE(locked.code(), 401020);
        QCOMPARE(locked.detail().value("remainlockTime"_L1), QJsonValue(u"7"_s));
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401020);
    }

    void controlledByTheAdministrator()
    {
        const ServerFixture fixture;
        QVERIFY(fixture.useAccounts("{\"account\":\"demo\",\"password\":\"Quillbox-demo1\",\"pwdcontrol\":1}"));
        QCOMPARE(fixture.changePassword(demoName(), demoPassword(), u"Another-1"_s).code(), 401026);
    }
};

REGISTER_TEST(TestPasswordChange)
#include "TestPasswordChange.moc"
