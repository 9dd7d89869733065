#include "ApiClient.h"

#include "api/ServerReplies.h"
#include "files/PathUtils.h"
#include "state/PersistentKeys.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QTest>

#include <thread>

using testing::LogRecorder;
using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace Qt::StringLiterals;

namespace
{

using Call = std::function<ServerReply(QBNetworking &, QBError *)>;

const QByteArray pretty5 = "{\n    \"ostype\": \"5\"\n}\n";

QJsonObject objectOf(const QByteArray &body)
{
    return QJsonDocument::fromJson(body).object();
}

} // namespace
Q_DECLARE_METATYPE(Call)

class TestApiCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sendsEachCall_data();
    void sendsEachCall();
    void signsIn();
    void signsInWithTicket();
    void staysSilentWithoutExpires();
    void passesRefusalsOn();
    void dropsAnOvertakenSignIn();
    void fetchesAWebToken();
    void sendsCodes();
    void signsThePasswordChange();
    void signsOut();
    void readsTheConfiguration();
    void asksForTheRightHost_data();
    void asksForTheRightHost();
    void reportsUserInfoFailures_data();
    void reportsUserInfoFailures();
    void keepsSecretsOutOfTheLog();
    void worksFromManyThreads();
};

void TestApiCalls::sendsEachCall_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    const auto row = [](const QByteArray &path, const QByteArray &body, Call call) {
        QTest::newRow(path.constData()) << call << path << body;
    };
    using N = QBNetworking;
    row("config?method=getoemconfigbysection&tokenid=t1", "{\n    \"section\": \"quillbox\"\n}\n",
        [](N &n, QBError *e) { return n.getOEMConfigBySection(e); });
    row("perm1?method=getsharedocconfig&tokenid=t1", "", [](N &n, QBError *e) { return n.getDocShareConfig(e); });
    row("user?method=agreedtotermsofuse&tokenid=t1", "", [](N &n, QBError *e) { return n.agreedToTermsOfUse(e); });
    row("user?method=get&tokenid=t1", "", [](N &n, QBError *e) { return n.getAgreedToTermsOfUseState(e); });
    row("entrydoc2?method=getuserquota&tokenid=t1", "", [](N &n, QBError *) { return n.requestQuota(); });
    row("config?method=get&tokenid=t1", pretty5, [](N &n, QBError *e) { return n.getConfig(e); });
    row("config?method=setquickstartstatus&tokenid=t1", pretty5, [](N &n, QBError *e) {
        n.setquickstartstatus(e);
        return QJsonObject{{u"a"_s, 1}};
    });
    row("update?method=check", "{\n    \"platform\": \"mac\",\n    \"version\": \"9.8.7\"\n}\n",
        [](N &n, QBError *e) { return n.requestCheckClientVersion(e); });
    row("update?method=download",
        "{\n    \"osType\": 3,\n    \"reqhost\": \"127.0.0.1\",\n    \"usehttps\": false\n}\n",
        [](N &n, QBError *e) { return n.requestDownloadUrl(e); });
    row("auth1?method=getconfig", "", [](N &n, QBError *) { return n.getServerConfig(); });
    row("auth1?method=getvcode&tokenid=t1", R"({"uuid":"x"})", [](N &n, QBError *e) { return n.getVcode(u"x"_s, e); });
    row("auth1?method=getvcode&tokenid=t1 ", R"({"uuid":""})", [](N &n, QBError *e) { return n.getVcode({}, e); });
}

void TestApiCalls::sendsEachCall()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    server.expect("POST /api/v1/" + path.trimmed() + " HTTP/1.1\r\n", ScriptedAnswer::json(R"({"a":1})"))
        .expect("POST /api/v1/" + path.trimmed() + " HTTP/1.1\r\n",
                ScriptedAnswer::json(R"({"errcode":401001,"errmsg":"no"})"));
    QBError error;
    QCOMPARE(call(client.networking, &error), ServerReply(QJsonObject{{u"a"_s, 1}}));
    QVERIFY(!error);
    QCOMPARE(server.bodies().first(), body);
    QVERIFY(
        server.requests().first().contains("\r\nContent-Type: application/x-www-form-urlencoded charset=utf-8\r\n"));
    const ServerReply refused = call(client.networking, &error);
    QVERIFY(error.code() == 401001 || !refused);
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::signsIn()
{
    ScriptedServer server;
    ApiClient client(server);
    server
        .expect("POST /api/v1/auth1?method=getnew HTTP/1.1\r\n",
                ScriptedAnswer::json(R"({"expires":3600,"userid":"u9","tokenid":"t9"})"))
        .expect("POST /api/v1/auth1?method=refreshtoken&tokenid=t9 HTTP/1.1\r\n", ScriptedAnswer::json("{}"));
    LogRecorder log;
    int called = 0;
    client.networking.loginWithAccountName(u"ann"_s, u"secret"_s, {}, {},
                                           [&](const QBError &error, const ServerReply &r) {
                                               ++called;
                                               QVERIFY(!error && !r);
                                               QCOMPARE(server.requests().size(), 1);
                                           });
    QCOMPARE(called, 1);
    QCOMPARE(client.plain(objectOf(server.bodies().first()).value(u"password"_s)), "secret"_ba);
    QCOMPARE(client.networking.notLoginAccountName(), u"ann"_s);
    QBGlobeInformation stored(client.globe.path(), true);
    QVERIFY(stored.isLogin());
    QCOMPARE(stored.account().name + stored.account().userID + stored.account().tokenID, u"annu9t9"_s);
    QVERIFY(log.contains(u"WORRING: refreshToken failed!"_s));
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::signsInWithTicket()
{
    ScriptedServer server;
    ApiClient client(server);
    LogRecorder log;
    for (const bool dictionary : {false, true}) {
        client.globe.setAccount({});
        server
            .expect("POST /api/v1/auth1?method=getbythirdparty&tokenid= HTTP/1.1\r\n",
                    ScriptedAnswer::json(R"({"expires":3600,"userid":7,"tokenid":"t9"})"))
            .expect("POST /api/v1/auth1?method=refreshtoken&tokenid=t9 ", ScriptedAnswer::json(R"({"expires":1})"));
        const LoginHandle handle = [](const QBError &error, const ServerReply &) { QVERIFY(!error); };
        if (dictionary)
            client.networking.loginWithTicketDic({{u"ticket"_s, u"ST"_s}}, u"bob"_s, u"cas"_s, handle);
        else
            client.networking.loginWithTicket(u"ST"_s, u"bob"_s, u"cas"_s, handle);
        QCOMPARE(client.globe.account().name + client.globe.account().userID, u"bob7"_s);
    }
    QVERIFY(!log.contains(u"WORRING"_s));
    QCOMPARE(server.bodies().at(0), server.bodies().at(2));
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::staysSilentWithoutExpires()
{
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", ScriptedAnswer::json(R"({"userid":"u","tokenid":"t"})"));
    client.networking.loginWithAccountName(u"ann"_s, u"p"_s, {}, {},
                                           [](const QBError &, const ServerReply &) { QFAIL("no completion"); });
    QVERIFY(!client.networking.isLogin());
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::passesRefusalsOn()
{
    ScriptedServer server;
    ApiClient client(server);
    server
        .expect("POST ", ScriptedAnswer::json(
                             R"({"errcode":401013,"errmsg":"change it","detail":{"vcodeinfo":{"uuid":"7"}}})", 401))
        .expect("POST ", ScriptedAnswer::json(R"({"errcode":400001})", 400));
    client.networking.loginWithAccountName(u"ann"_s, u"p"_s, {}, {},
                                           [](const QBError &error, const ServerReply &reply) {
                                               QCOMPARE(error.code(), 401013);
                                               QVERIFY(error.needModifyPassword());
                                               QVERIFY(reply && reply->contains(u"detail"_s));
                                           });
    // Without a password there is no body; the server's answer is what counts.
    client.networking.loginWithAccountName(
        u"ann"_s, {}, {}, {}, [](const QBError &error, const ServerReply &) { QCOMPARE(error.code(), 400001); });
    QVERIFY(server.bodies().last().isEmpty());
    QVERIFY(!client.networking.isLogin());
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::dropsAnOvertakenSignIn()
{
    ScriptedServer server;
    ApiClient client(server);
    ScriptedAnswer late = ScriptedAnswer::json(R"({"expires":1,"userid":"old","tokenid":"old"})");
    late.drip = std::chrono::milliseconds(2);
    server.expect("POST ", late)
        .expect("POST ", ScriptedAnswer::json(R"({"expires":1,"userid":"new","tokenid":"new"})"));
    server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
    QBError first;
    std::thread earlier([&] {
        client.networking.loginWithAccountName(u"old"_s, u"p"_s, {}, {},
                                               [&](const QBError &error, const ServerReply &) { first = error; });
    });
    QVERIFY(server.waitForRequests(1));
    client.networking.loginWithAccountName(u"new"_s, u"p"_s, {}, {},
                                           [](const QBError &error, const ServerReply &) { QVERIFY(!error); });
    earlier.join();
    QCOMPARE(first.code(), static_cast<qint64>(TransportError::Cancelled));
    QCOMPARE(client.globe.account().userID, u"new"_s);
}

void TestApiCalls::fetchesAWebToken()
{
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    client.defaults.set(PersistentKeys::accountName(), u"ann"_s);
    client.defaults.set(PersistentKeys::encryptPassword(), PathUtils::base64EncodedString(u"remembered"_s));
    server
        .expect("POST /api/v1/auth1?method=getnew&tokenid=t1 ",
                ScriptedAnswer::json(R"({"expires":1,"tokenid":"web"})"))
        .expect("POST ", ScriptedAnswer::json(R"({"tokenid":"web"})"))
        .expect("POST ", ScriptedAnswer::json(R"({"errcode":1,"expires":1,"tokenid":"web"})"));
    QCOMPARE(client.networking.getWebTokenid(), u"web"_s);
    const QJsonObject body = objectOf(server.bodies().first());
    QCOMPARE(client.plain(body.value(u"password"_s)), "remembered"_ba);
    QCOMPARE(body.keys(), QStringList({u"account"_s, u"deviceinfo"_s, u"password"_s}));
    QVERIFY(client.networking.getWebTokenid().isNull());
    QVERIFY(client.networking.getWebTokenid().isNull());
    QCOMPARE(client.globe.account().tokenID, u"t1"_s);
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::sendsCodes()
{
    ScriptedServer server;
    ApiClient client(server);
    for (const bool flag : {false, true}) {
        server.expect("POST /api/v1/auth1?method=sendauthvcode&tokenid= ", ScriptedAnswer::json(R"({"a":1})"));
        QBError error;
        QVERIFY(client.networking.sendAuthVCode(u"ann"_s, u"p"_s, {}, flag, !flag, &error));
        const QByteArray body = server.bodies().last();
        const QByteArray cipher = objectOf(body).value(u"password"_s).toString().toLatin1();
        QCOMPARE(body, R"({"account":"ann","deviceinfo":{"devicetype":"Mac","name":"mac","ostype":5,)"
                       R"("udid":"0A-1B-2C-3D-4E-5F"},"oldtelnum":"","password":")" +
                           cipher + "\"}");
        QCOMPARE(client.plain(QString::fromLatin1(cipher)), "p"_ba);
    }
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::signsThePasswordChange()
{
    ScriptedServer server;
    ApiClient client(server);
    client.networking.setNotLoginAccountName(u"王五"_s);
    server.expect("POST /api/v1/auth1?method=modifypassword&sign=", ScriptedAnswer::reply(""))
        .expect("POST ", ScriptedAnswer::json(R"({"errcode":401002,"errmsg":"wrong"})"));
    QBError error;
    client.networking.changeThePassword(u"old"_s, u"new"_s, &error);
    QVERIFY(!error);
    const QByteArray body = server.bodies().first();
    QCOMPARE(client.plain(objectOf(body).value(u"oldpwd"_s)), "old"_ba);
    QCOMPARE(client.plain(objectOf(body).value(u"newpwd"_s)), "new"_ba);
    QCOMPARE(objectOf(body).value(u"account"_s).toString(), u"王五"_s);
    const QByteArray sign = QCryptographicHash::hash(body + "qvxzt.kmn", QCryptographicHash::Md5).toHex().toUpper();
    QVERIFY(server.requests().first().startsWith("POST /api/v1/auth1?method=modifypassword&sign=" + sign + " "));
    client.networking.changeThePassword(u"old"_s, u"new"_s, &error);
    QCOMPARE(error.code(), 401002);
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::signsOut()
{
    ScriptedServer server;
    ApiClient client(server);
    int called = 0;
    client.networking.logoutCurrentAccountWithHandle([&] { ++called; });
    QCOMPARE(called, 1);
    client.signIn();
    server.expect("POST /api/v1/auth1?method=logout&tokenid=t1 ", ScriptedAnswer::json(R"({"errcode":401001})"));
    client.networking.logoutCurrentAccountWithHandle([&] { ++called; });
    QCOMPARE(called, 2);
    QCOMPARE(server.bodies().last(), "{\n    \"ostype\": 5\n}\n"_ba);
    const QBGlobeInformation stored(client.globe.path(), true);
    QCOMPARE(stored.account().name + stored.account().userID + stored.account().tokenID, QString());
    QCOMPARE(stored.server().address, u"127.0.0.1"_s);
    QVERIFY(!client.networking.requestQuota());
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::readsTheConfiguration()
{
    ScriptedServer server;
    ApiClient client(server);
    server
        .expect("POST ", ScriptedAnswer::json(
                             R"({"internal_link_prefix":"P://","thirdauth":{"config":{"autoCasRedirect":true}}})"))
        .expect("POST ", ScriptedAnswer::json(R"({"internal_link_prefix":7,"thirdauth":"none"})"));
    QVERIFY(client.networking.getServerConfig());
    QCOMPARE(client.networking.internalLinkPrefix(), u"P://"_s);
    QVERIFY(client.networking.autoCasRedirect());
    QVERIFY(client.networking.getServerConfig());
    QVERIFY2(client.networking.autoCasRedirect(), "kept when the reply does not say");
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::asksForTheRightHost_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<QByteArray>("body");
    const auto body = [](const QByteArray &https, const QByteArray &port) {
        return "{\n    \"https\": " + https + (port.isEmpty() ? "" : ",\n    \"port\": " + port) + "\n}\n";
    };
    QTest::newRow("https") << R"({"https":true,"https_port":8443,"port":80})"_ba << body("1", "8443");
    QTest::newRow("https as number") << R"({"https":1,"https_port":"443"})"_ba << body("1", "\"443\"");
    QTest::newRow("http") << R"({"https":false,"https_port":8443,"port":80})"_ba << body("0", "80");
    QTest::newRow("silent") << "{}"_ba << body("0", "");
    QTest::newRow("refused") << R"({"errcode":1,"https":true})"_ba << body("0", "");
}

void TestApiCalls::asksForTheRightHost()
{
    QFETCH(QByteArray, config);
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST /api/v1/auth1?method=getconfig ", ScriptedAnswer::json(config))
        .expect("POST /api/v1/redirect?method=gethostinfo&tokenid= ", ScriptedAnswer::json(R"({"port":1})"));
    QVERIFY(client.networking.getHostInfo());
    QTEST(server.bodies().last(), "body");
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::reportsUserInfoFailures_data()
{
    QTest::addColumn<bool>("serviceRuns");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("reports");
    const QByteArray bad = R"({"errcode":777777,"errmsg":"gone"})";
    QTest::newRow("service runs") << true << bad << 1;
    QTest::newRow("service is down") << false << bad << 0;
    QTest::newRow("no failure") << true << R"({"name":"Ann"})"_ba << 0;
}

void TestApiCalls::reportsUserInfoFailures()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, reports);
    ScriptedServer server;
    ApiClient client(server);
    QFETCH(bool, serviceRuns);
    client.serviceRuns = serviceRuns;
    QList<QBError> reported;
    client.networking.setServiceErrorReporter([&](const QBError &error) { reported.append(error); });
    server.expect("POST /api/v1/user?method=get&tokenid= ", ScriptedAnswer::json(reply));
    QCOMPARE(client.networking.requestUserInfo().has_value(), reply.contains("name"));
    QVERIFY2(reported.isEmpty(), "later, on the main thread");
    QCoreApplication::processEvents();
    QCOMPARE(reported.size(), reports);
    QVERIFY(reported.isEmpty() || reported.first().localizedDescription() == u"gone"_s);
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::keepsSecretsOutOfTheLog()
{
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    QBGlobeAccount account = client.globe.account();
    account.tokenID = u"verysecrettoken"_s;
    client.globe.setAccount(account);
    server.expect("POST ", ScriptedAnswer::json(R"({"errcode":401001,"errmsg":"forged\nline"})"))
        .expect("POST ", ScriptedAnswer::json(R"({"tokenid":"half\"othersecret","expires":1})"));
    LogRecorder log;
    QBError error;
    client.networking.getConfig(&error);
    client.networking.testURLSessionURL(client.networking.spliceURL(u"auth1"_s, u"getnew"_s), {}, nullptr);
    QTRY_VERIFY(log.contains(u"expires"_s));
    QVERIFY(log.contains(u"error:"_s) && log.contains(u"-->url:http://127.0.0.1:"_s));
    QVERIFY(!log.contains(u"verysecrettoken"_s) && !log.contains(u"othersecret"_s));
    for (const QString &line : log.lines())
        QVERIFY(!line.contains(u'\n'));
    QCOMPARE(server.complaint(), QString());
}

void TestApiCalls::worksFromManyThreads()
{
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::json(R"({"internal_link_prefix":"P","expires":1,"userid":"u","tokenid":"t"})"));
    ApiClient client(server);
    std::vector<std::thread> threads;
    std::atomic<int> good = 0;
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([&, i] {
            QBNetworking &networking = client.networking;
            for (int call = 0; call < 10; ++call) {
                if (i == 0)
                    networking.loginWithAccountName(u"a"_s, u"p"_s, {}, {},
                                                    [](const QBError &, const ServerReply &) {});
                else if (i == 1)
                    networking.logoutCurrentAccountWithHandle({});
                good += networking.getServerConfig().has_value() && networking.internalLinkPrefix() == u"P"_s;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(good.load(), 60);
}

REGISTER_TEST(TestApiCalls)
#include "TestApiCalls.moc"
