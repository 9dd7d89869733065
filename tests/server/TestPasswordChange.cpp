#include "server/ServerFixture.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QFile>
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
        QTest::addColumn<QString>("oldPassword");
        QTest::addColumn<QString>("newPassword");
        QTest::addColumn<bool>("strong");
        QTest::addColumn<int>("code");
        const QString old = demoPassword();
        QTest::newRow("wrong old") << u"x"_s << u"Another-1"_s << false << 401003;
        QTest::newRow("unchanged") << old << old << false << 401035;
        QTest::newRow("too short") << old << u"abc"_s << false << 401017;
        QTest::newRow("empty") << old << QString() << false << 401017;
        QTest::newRow("weak is enough") << old << u"abcdef"_s << false << 0;
        QTest::newRow("weak is not enough") << old << u"abcdef"_s << true << 401017;
        QTest::newRow("strong") << old << u"Abcdef-1"_s << true << 0;
    }
    void refusals()
    {
        QFETCH(QString, oldPassword);
        QFETCH(QString, newPassword);
        QFETCH(bool, strong);
        const ServerFixture fixture({{u"enable_strong_pwd"_s, strong}});
        const Answer answer = fixture.changePassword(demoName(), oldPassword, newPassword);
        QTEST(answer.code(), "code");
        const QString valid = answer.status == 200 ? newPassword : demoPassword();
        QCOMPARE(fixture.signIn(demoName(), valid).status, 200);
    }

    /// The signature covers every byte of the body as sent.
    void signatures_data()
    {
        QTest::addColumn<QByteArray>("appended");
        QTest::addColumn<QByteArray>("salt");
        QTest::addColumn<bool>("upper");
        QTest::addColumn<int>("code");
        QTest::newRow("good") << QByteArray() << QByteArray("qvxzt.kmn") << false << 0;
        QTest::newRow("upper case digits") << QByteArray() << QByteArray("qvxzt.kmn") << true << 0;
        QTest::newRow("body changed") << QByteArray(" ") << QByteArray("qvxzt.kmn") << false << 401038;
        QTest::newRow("other salt") << QByteArray() << QByteArray("qvxzt.kmm") << false << 401038;
        QTest::newRow("no salt") << QByteArray() << QByteArray() << false << 401038;
    }
    void signatures()
    {
        QFETCH(QByteArray, appended);
        QFETCH(QByteArray, salt);
        QFETCH(bool, upper);
        const ServerFixture fixture;
        const QByteArray body = QJsonDocument(QJsonObject{{u"account"_s, demoName()},
                                                          {u"oldpwd"_s, fixture.encrypted(demoPassword())},
                                                          {u"newpwd"_s, fixture.encrypted(u"Another-1"_s)}})
                                    .toJson();
        QByteArray sign = QCryptographicHash::hash(body + salt, QCryptographicHash::Md5).toHex();
        sign = upper ? sign.toUpper() : sign;
        const QString target = "/api/v1/auth1?method=modifypassword&sign="_L1 + QString::fromLatin1(sign);
        QTEST(fixture.post(target, body + appended).code(), "code");
        QCOMPARE(fixture.post(u"/api/v1/auth1?method=modifypassword"_s, body).code(), 401038);
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
        QFile file(fixture.folder() + "/data/accounts.json"_L1);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"accounts":[{"account":"demo","password":"Quillbox-demo1","pwdcontrol":1}]})");
        file.close();
        QCOMPARE(fixture.changePassword(demoName(), demoPassword(), u"Another-1"_s).code(), 401026);
    }
};

REGISTER_TEST(TestPasswordChange)
#include "TestPasswordChange.moc"
