#include "server/ServerFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <httplib.h>

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
QJsonObject resettable(const QJsonObject &more = {})
{
    QJsonObject scenario = more;
    scenario.insert("vcode_server_status"_L1,
                    QJsonObject{{u"send_vcode_by_sms"_s, true}, {u"send_vcode_by_email"_s, true}});
    return scenario;
}

Answer ways(const ServerFixture &fixture, const QString &account)
{
    return fixture.call(u"auth1.getvcodesendway"_s, {{u"account"_s, account}});
}

Answer send(const ServerFixture &fixture, const QString &account, const QString &way = u"sms"_s)
{
    return fixture.call(u"auth1.sendvcode"_s, {{u"account"_s, account}, {u"way"_s, way}});
}

Answer reset(const ServerFixture &fixture, const QString &account, const QString &code,
             const QString &password = u"Another-1"_s)
{
    return fixture.call(u"auth1.resetpassword"_s,
                        {{u"account"_s, account}, {u"vcode"_s, code}, {u"newpwd"_s, fixture.encrypted(password)}});
}

QString wrongFor(const QString &code)
{
    return code == "000000"_L1 ? u"000001"_s : u"000000"_s;
}

QJsonObject waysIn(const Answer &answer)
{
    return answer.json.value("ways"_L1).toObject();
}
} // namespace

class TestPasswordReset : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newPasswordWithACode()
    {
        const ServerFixture fixture(resettable());
        const QString token = fixture.signInToken();
        const QJsonObject shown = waysIn(ways(fixture, demoName()));
        QCOMPARE(shown.value("sms"_L1).toString(), u"138****1234"_s);
        QCOMPARE(shown.value("email"_L1).toString(), u"d***@example.org"_s);
        const Answer sent = send(fixture, demoName(), u"email"_s);
        QCOMPARE(sent.text("authway"), u"d***@example.org"_s);
        QCOMPARE(sent.number("sendinterval"), 60);
        QVERIFY(send(fixture, demoName(), u"email"_s).json.value("isduplicatesended"_L1).toBool());
        const auto codes = fixture.server->sentCodes();
        QCOMPARE(codes.size(), 1);
        QCOMPARE(codes[0].way, u"email"_s);

        QCOMPARE(reset(fixture, demoName(), codes[0].code, u"abc"_s).code(), 401017);
        QCOMPARE(reset(fixture, demoName(), codes[0].code).status, 200);
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401003);
        QCOMPARE(fixture.signIn(demoName(), u"Another-1"_s).status, 200);
        QCOMPARE(fixture.call(u"user.get"_s, {}, token).code(), 401001);
        QCOMPARE(reset(fixture, demoName(), codes[0].code).code(), 401039); // used
    }

    void codesEnd()
    {
        ServerFixture fixture(resettable({{u"lock"_s, QJsonObject{{u"after"_s, 4}, {u"minutes"_s, 10}}},
                                          {u"second_factor"_s, QJsonObject{{u"wrong_codes"_s, 2}}}}));
        send(fixture, demoName());
        const QString first = fixture.server->sentCodes().last().code;
        fixture.pass(301);
        QCOMPARE(reset(fixture, demoName(), first).code(), 401039);
        send(fixture, demoName());
        const QString second = fixture.server->sentCodes().last().code;
        QCOMPARE(reset(fixture, demoName(), wrongFor(second)).code(), 401039);
        QCOMPARE(reset(fixture, demoName(), wrongFor(second)).code(), 401039);
        QCOMPARE(reset(fixture, demoName(), second).code(), 401020); // spoilt, and one wrong try too many
        fixture.pass(10 * 60 + 1);
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).status, 200);
    }

    /// A stranger sees the same whether there is such an account or not.
    void unknownNamesLookLikeOthers()
    {
        ServerFixture fixture(resettable({{u"lock"_s, QJsonObject{{u"after"_s, 2}}}}));
        const QString name = u"nobody-here"_s;
        const QJsonObject known = waysIn(ways(fixture, demoName()));
        const QJsonObject shown = waysIn(ways(fixture, name));
        QCOMPARE(shown.keys(), known.keys());
        QCOMPARE(shown.value("sms"_L1).toString().size(), known.value("sms"_L1).toString().size());
        QVERIFY(shown.value("email"_L1).toString().endsWith("***@example.org"_L1));
        QCOMPARE(send(fixture, name).json.keys(), send(fixture, demoName()).json.keys());
        QVERIFY(send(fixture, name).json.value("isduplicatesended"_L1).toBool());
        QCOMPARE(fixture.server->sentCodes().size(), 1);
        QCOMPARE(reset(fixture, name, u"123456"_s).code(), 401039);
        QCOMPARE(reset(fixture, name, u"123456"_s).code(), 401020);
        QVERIFY(fixture.restart() && fixture.useScenario(resettable()));
        QCOMPARE(waysIn(ways(fixture, name)), shown);
        QVERIFY(waysIn(ways(fixture, u"somebody-else"_s)) != shown);
    }

    void refusals_data()
    {
        const testing::Rows<QJsonObject, QByteArray, int> row("scenario", "account", "code");
        const QByteArray bare = "{\"account\":\"demo\",\"password\":\"x12345\"}";
        row("switched off", {}, {}, 401064);
        row("nothing bound", resettable(), bare, 401058);
        row("controlled", resettable(), bare.chopped(1) + ",\"phone\":\"13800001234\",\"pwdcontrol\":1}", 401026);
        row("gateway down", resettable({{u"second_factor"_s, QJsonObject{{u"sms"_s, u"down"_s}}}}), {}, 404029);
    }
    void refusals()
    {
        QFETCH(QJsonObject, scenario);
        QFETCH(QByteArray, account);
        const ServerFixture fixture(scenario);
        QVERIFY(account.isEmpty() || fixture.useAccounts(account));
        Answer last = send(fixture, demoName());
        if (last.status == 200)
            last = reset(fixture, demoName(), fixture.server->sentCodes().last().code);
        QTEST(last.code(), "code");
        QCOMPARE(send(fixture, demoName(), u"pigeon"_s).status >= 400, true);
    }

    /// A page out of a file may read these replies, errors included; other pages and other calls are left out.
    void repliesForPages()
    {
        const ServerFixture fixture(resettable());
        httplib::Client client("127.0.0.1", fixture.httpPort());
        const auto allowed = [&client](const char *method, const char *page) {
            const std::string target = std::string("/api/v1/auth1?method=") + method;
            return client.Post(target, {{"Origin", page}}, "{}", "text/plain")
                ->get_header_value("Access-Control-Allow-Origin");
        };
        for (const char *method : {"getvcodesendway", "sendvcode", "resetpassword"})
            for (const char *page : {"null", "file://"})
                QCOMPARE(allowed(method, page), std::string(page));
        QCOMPARE(allowed("sendvcode", "http://example.org"), std::string());
        for (const char *method : {"getnew", "getconfig", "modifypassword"})
            QCOMPARE(allowed(method, "null"), std::string());
    }
};

REGISTER_TEST(TestPasswordReset)
#include "TestPasswordReset.moc"
