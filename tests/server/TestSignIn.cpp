#include "server/ServerFixture.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{
QJsonObject pictureScenario(int count)
{
    return {{u"vcode_login_config"_s, QJsonObject{{u"isenable"_s, true}, {u"passwderrcnt"_s, count}}}};
}

QJsonObject lockScenario(int after, int minutes)
{
    return {{u"lock"_s, QJsonObject{{u"after"_s, after}, {u"minutes"_s, minutes}}}};
}

/// A fresh picture code as the client sends it.
QJsonObject solvedPicture(const ServerFixture &fixture)
{
    const QString uuid = fixture.call(u"auth1.getvcode"_s, {{u"uuid"_s, u""_s}}).text("uuid");
    return {{u"ismodify"_s, false}, {u"uuid"_s, uuid}, {u"vcode"_s, fixture.server->pictureCodeText(uuid).toLower()}};
}
} // namespace

class TestSignIn : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sessionFromSignInToLogout()
    {
        const ServerFixture fixture;
        const Answer signedIn = fixture.signIn(demoName(), demoPassword());
        QCOMPARE(signedIn.status, 200);
        QCOMPARE(signedIn.number("expires"), 3600);
        const QString token = signedIn.text("tokenid");
        const QString userid = signedIn.text("userid");
        QVERIFY(token.size() >= 32 && !userid.isEmpty());

        QJsonObject refresh{{u"tokenid"_s, token}, {u"expirestype"_s, 2}, {u"userid"_s, userid}};
        QCOMPARE(fixture.call(u"auth1.refreshtoken"_s, refresh, token).number("expires"), 3600);
        refresh.insert("userid"_L1, u"other"_s);
        QCOMPARE(fixture.call(u"auth1.refreshtoken"_s, refresh, token).code(), 401001);

        QCOMPARE(fixture.call(u"auth1.logout"_s, {{u"ostype"_s, 5}}, token).status, 200);
        QCOMPARE(fixture.call(u"user.get"_s, {}, token).code(), 401001);
    }

    void tokenLife()
    {
        ServerFixture fixture({{u"token_life"_s, 100}});
        const QString token = fixture.signInToken();
        const QString userid = fixture.call(u"user.get"_s, {}, token).text("userid");
        fixture.pass(99);
        const QJsonObject refresh{{u"tokenid"_s, token}, {u"expirestype"_s, 2}, {u"userid"_s, userid}};
        QCOMPARE(fixture.call(u"auth1.refreshtoken"_s, refresh, token).status, 200);
        fixture.pass(99);
        QCOMPARE(fixture.call(u"user.get"_s, {}, token).status, 200);
        fixture.pass(1);
        QCOMPARE(fixture.call(u"user.get"_s, {}, token).code(), 401001);
    }

    void refusedSignIns()
    {
        const ServerFixture fixture(lockScenario(99, 1));
        const auto refuses = [&fixture](const QString &account, const QString &password) {
            const Answer answer = fixture.signIn(account, password);
            return answer.code() == 401003 && answer.status == 401 && !answer.json.contains("tokenid"_L1);
        };
        QVERIFY(refuses(demoName(), u"Quillbox-demo2"_s));
        QVERIFY(refuses(demoName(), demoPassword().toUpper()));
        for (const QString &other : {u"nobody"_s, u"demo' OR '1'='1"_s, u"用户😀"_s, u"demo "_s})
            QVERIFY2(refuses(other, demoPassword()), qPrintable(other));
    }

    /// A ciphertext that does not decrypt must look like a wrong password.
    void brokenCiphertext()
    {
        const ServerFixture fixture;
        QJsonObject body = fixture.signInBody(demoName(), demoPassword());
        for (const QString &cipher : {u"AAAA"_s, u"not base64!"_s, QString::fromLatin1(QByteArray(128, 'x').toBase64()),
                                      fixture.encrypted(QString())}) {
            body.insert("password"_L1, cipher);
            QCOMPARE(fixture.call(u"auth1.getnew"_s, body).code(), 401003);
        }
    }

    void lockAndItsEnd()
    {
        ServerFixture fixture(lockScenario(3, 25));
        for (const QString &name : {u"nobody"_s, demoName()}) { // unknown names lock as well, each by itself
            QCOMPARE(fixture.signIn(name, u"x"_s).code(), 401003);
            QCOMPARE(fixture.signIn(name, u"x"_s).code(), 401003);
        }
        QCOMPARE(fixture.signIn(u"nobody"_s, u"x"_s).code(), 401020);
        const Answer third = fixture.signIn(demoName(), u"x"_s);
        QCOMPARE(third.code(), 401020);
        QCOMPARE(third.detail().value("remainlockTime"_L1), QJsonValue(u"25"_s));
        fixture.pass(24 * 60 + 1);
        const Answer nearlyOver = fixture.signIn(demoName(), demoPassword());
        QCOMPARE(nearlyOver.code(), 401020);
        QCOMPARE(nearlyOver.detail().value("remainlockTime"_L1), QJsonValue(u"1"_s));
        fixture.pass(59);
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).status, 200);
        // The count starts again after a success.
        QCOMPARE(fixture.signIn(demoName(), u"x"_s).code(), 401003);
    }

    /// Guesses sent at the same time count one by one.
    void parallelGuesses()
    {
        const ServerFixture fixture(lockScenario(4, 10));
        std::atomic<int> wrong = 0;
        std::atomic<int> locked = 0;
        std::vector<std::thread> guessers;
        for (int i = 0; i < 12; ++i)
            guessers.emplace_back([&] {
                const int code = fixture.signIn(demoName(), u"guess"_s).code();
                wrong += code == 401003 ? 1 : 0;
                locked += code == 401020 ? 1 : 0;
            });
        for (std::thread &guesser : guessers)
            guesser.join();
        QCOMPARE(wrong.load(), 3);
        QCOMPARE(locked.load(), 9);
    }

    void pictureCodeAfterWrongPasswords()
    {
        const ServerFixture fixture(pictureScenario(2));
        QCOMPARE(fixture.signIn(demoName(), u"x"_s).detail().value("isShowStatus"_L1),
                 QJsonValue(QJsonValue::Undefined));
        QCOMPARE(fixture.signIn(demoName(), u"x"_s).detail().value("isShowStatus"_L1), QJsonValue(true));
        const Answer missing = fixture.signIn(demoName(), demoPassword());
        QCOMPARE(missing.code(), 401021);
        QCOMPARE(missing.detail().value("isShowStatus"_L1), QJsonValue(true));
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), solvedPicture(fixture)).status, 200);
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).status, 200);
    }

    void pictureCodeWorksOnce()
    {
        ServerFixture fixture(pictureScenario(0));
        const QJsonObject picture = solvedPicture(fixture);
        QCOMPARE(fixture.signIn(demoName(), u"x"_s, picture).code(), 401003);
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), picture).code(), 401031);
        QJsonObject wrong = solvedPicture(fixture);
        wrong.insert("vcode"_L1, u"0000"_s);
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), wrong).code(), 401031);
        const QJsonObject late = solvedPicture(fixture);
        fixture.pass(180);
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), late).code(), 401031);
        QCOMPARE(fixture.signIn(demoName(), demoPassword(), solvedPicture(fixture)).status, 200);
    }

    void pictureIsReplaced()
    {
        const ServerFixture fixture;
        const Answer first = fixture.call(u"auth1.getvcode"_s, {{u"uuid"_s, u""_s}});
        const QString uuid = first.text("uuid");
        const QByteArray png = QByteArray::fromBase64(first.text("vcode").toLatin1());
        QVERIFY(!QImage::fromData(png, "PNG").isNull());
        QVERIFY(!fixture.server->pictureCodeText(uuid).isEmpty());
        const Answer second = fixture.call(u"auth1.getvcode"_s, {{u"uuid"_s, uuid}});
        QVERIFY(second.text("uuid") != uuid);
        QVERIFY(fixture.server->pictureCodeText(uuid).isEmpty());
    }

    /// A second token, for web pages, neither needs a picture code nor a second factor.
    void secondTokenOfASession()
    {
        ServerFixture fixture;
        const QString token = fixture.signInToken();
        QJsonObject scenario = pictureScenario(0);
        scenario.insert("dualfactor_auth_server_status"_L1, QJsonObject{{u"auth_by_sms"_s, true}});
        QVERIFY(fixture.useScenario(scenario));
        QJsonObject body = fixture.signInBody(demoName(), demoPassword());
        body.remove("vcodeinfo"_L1);
        body.remove("dualfactorauthinfo"_L1);
        QCOMPARE(fixture.call(u"auth1.getnew"_s, body).code(), 401021);
        const Answer second = fixture.call(u"auth1.getnew"_s, body, token);
        QCOMPARE(second.status, 200);
        QVERIFY(second.text("tokenid") != token);
        QCOMPARE(fixture.call(u"user.get"_s, {}, token).status, 200);
    }

    void singleSignOn_data()
    {
        const testing::Rows<QString, QJsonValue, int> row("authenticator", "params", "code");
        const QJsonObject good{{u"ticket"_s, u"ST-1"_s}, {u"more"_s, 1}};
        row("good", "sso", QJsonValue(good), 0);
        row("unknown ticket", "sso", QJsonValue(QJsonObject{{u"ticket"_s, u"ST-2"_s}}), 401009);
        row("unknown account", "sso", QJsonValue(QJsonObject{{u"ticket"_s, u"ST-3"_s}}), 401009);
        row("other authenticator", "other", QJsonValue(good), 401009);
        row("no ticket", "sso", QJsonValue(QJsonObject()), 400002);
        row("text for object", "sso", QJsonValue(u"ST-1"_s), 400002);
    }
    void singleSignOn()
    {
        QFETCH(QString, authenticator);
        QFETCH(QJsonValue, params);
        const QJsonObject tickets{{u"ST-1"_s, demoName()}, {u"ST-3"_s, u"gone"_s}};
        const ServerFixture fixture({{u"thirdauth"_s, QJsonObject{{u"id"_s, u"sso"_s}, {u"tickets"_s, tickets}}}});
        const Answer answer =
            fixture.call(u"auth1.getbythirdparty"_s, {{u"thirdpartyid"_s, authenticator}, {u"params"_s, params}});
        QTEST(answer.code(), "code");
        QCOMPARE(answer.json.contains("tokenid"_L1), answer.status == 200);
    }

    void accountsThatMayNotSignIn_data()
    {
        const testing::Rows<QJsonObject, QJsonObject, int> row("members", "scenario", "code");
        const QJsonObject strong{{u"enable_strong_pwd"_s, true}};
        row("disabled", QJsonObject{{u"disabled"_s, true}}, {}, 401004);
        row("initial", QJsonObject{{u"initialpassword"_s, true}}, {}, 401012);
        row("initial for all", {}, QJsonObject{{u"password"_s, QJsonObject{{u"initial_change"_s, true}}}}, 401012);
        row("expired", {}, QJsonObject{{u"password"_s, QJsonObject{{u"life_days"_s, 30}}}}, 401013);
        row("weak", QJsonObject{{u"password"_s, u"weakling"_s}}, strong, 401017);
        row("client", {}, QJsonObject{{u"client_disabled"_s, true}}, 401011);
        row("none of it", {}, {}, 0);
    }
    void accountsThatMayNotSignIn()
    {
        QFETCH(QJsonObject, members);
        QFETCH(QJsonObject, scenario);
        ServerFixture fixture(scenario);
        // Edited by hand while the server runs.
        QJsonObject entry{{u"account"_s, u"anna"_s}, {u"password"_s, u"Anna-pass1"_s}};
        for (auto it = members.begin(); it != members.end(); ++it)
            entry.insert(it.key(), it.value());
        QVERIFY(fixture.useAccounts(QJsonDocument(entry).toJson()));
        const QString password = entry.value("password"_L1).toString();
        QTEST(fixture.signIn(u"anna"_s, password).code(), "code");
        QVERIFY(fixture.restart());
        const QByteArray accounts = testing::contentOf(fixture.folder() + "/data/accounts.json"_L1);
        QVERIFY2(accounts.contains("anna") && !accounts.contains(password.toUtf8()), "the plain password stayed");
    }
};

REGISTER_TEST(TestSignIn)
#include "TestSignIn.moc"
