#include "ApiClient.h"

#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTest>

#include <thread>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace Qt::StringLiterals;

namespace
{

enum class Place { Plain, Secure, PlainOnSecurePort, SecureOnPlainPort, Nobody };

} // namespace
Q_DECLARE_METATYPE(Place)
Q_DECLARE_METATYPE(ScriptedAnswer)

/// What the client makes of a server that fails: one table of faults, each met by every kind of call.
class TestApiFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void meetsEveryFault_data();
    void meetsEveryFault();
    void refusesAnOversizedReply();
    void reachesOnlyWithoutRedirect_data();
    void reachesOnlyWithoutRedirect();
    void probesHttpsThenHttp_data();
    void probesHttpsThenHttp();
    void dropsAnOvertakenProbe();
    void stopsAnOvertakenProbe();
    void signsOutDespiteARefusedSignIn();
    void signsOutSoonDespiteASilentServer();
    void signsInWithoutHandler_data();
    void signsInWithoutHandler();
    void pingsTheStoredServer();
};

void TestApiFailures::meetsEveryFault_data()
{
    QTest::addColumn<Place>("place");
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<qint64>("code");
    QTest::addColumn<bool>("dataKept");
    QTest::addColumn<bool>("reachable");
    const auto row = [](const char *name, Place place, const ScriptedAnswer &answer, TransportError error,
                        bool dataKept = false, bool reachable = false) {
        QTest::newRow(name) << place << answer << QBError::transportDomain() << static_cast<qint64>(error) << dataKept
                            << reachable;
    };
    const auto server = [](const char *name, const ScriptedAnswer &answer, qint64 code) {
        QTest::newRow(name) << Place::Plain << answer << QBError::serverDomain() << code << true << true;
    };
    using A = ScriptedAnswer;
    using E = TransportError;
    row("server down", Place::Nobody, {}, E::CannotConnect);
    row("refusing", Place::Plain, A::raw(""), E::ConnectionLost);
    row("hanging", Place::Plain, A::hang(), E::TimedOut);
    row("cut in the header", Place::Plain, A::raw("HTTP/1.1 200 OK\r\nServer: x\r\n"), E::ConnectionLost);
    row("cut in the body", Place::Plain, A::raw("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n{"), E::ConnectionLost);
    row("not HTTP", Place::Plain, A::raw("\x01\x02garbage\r\n\r\n"), E::BadReply);
    row("not JSON", Place::Plain, A::reply("<html>sign in to the hotel</html>"), E::BadReply, true, true);
    row("wrong shape: array", Place::Plain, A::json("[1,2]"), E::BadReply, true, true);
    row("wrong shape: number", Place::Plain, A::json("17"), E::BadReply, true, true);
    row("404 without error body", Place::Plain, A::reply("", 404), E::BadReply, true, true);
    row("502 with a page", Place::Plain, A::reply("<html>Bad Gateway</html>", 502), E::BadReply, true, true);
    row("redirect to nowhere", Place::Plain, A::redirect(u"http://127.0.0.1:1/"_s), E::CannotConnect);
    row("redirect to another scheme", Place::Plain, A::redirect(u"ftp://127.0.0.1/"_s), E::BadReply);
    row("redirect in a circle", Place::Plain, A::redirect(u"/api/v1/ping"_s), E::TooManyRedirects);
    row("plain on the secure port", Place::PlainOnSecurePort, A::json("{}"), E::ConnectionLost);
    row("secure on the plain port", Place::SecureOnPlainPort, A::json("{}"), E::SecureConnectionFailed);
    server("401 with error body", A::json(R"({"errcode":401001,"errmsg":"m"})", 401), 401001);
    server("500 with error body", A::json(R"({"errcode":500001})", 500), 500001);
    // Any certificate is accepted, so the fault is the server's answer, not its certificate.
    QTest::newRow("unknown certificate") << Place::Secure << A::json(R"({"errcode":401003})") << QBError::serverDomain()
                                         << qint64(401003) << true << true;
}

void TestApiFailures::meetsEveryFault()
{
    QFETCH(Place, place);
    QFETCH(ScriptedAnswer, answer);
    const bool tls = place == Place::Secure || place == Place::PlainOnSecurePort;
    ScriptedServer server(tls ? ScriptedServer::Security::Tls : ScriptedServer::Security::Plain);
    server.answerAll(answer);
    ApiClient client(u"127.0.0.1"_s, server.port(), place == Place::Secure || place == Place::SecureOnPlainPort);
    client.signIn();
    if (place == Place::Nobody)
        server.stop();
    QBNetworking &networking = client.networking;
    QElapsedTimer timer;
    timer.start();

    QBError error;
    const bool array = answer.bytes.endsWith("[1,2]"); // which is what the plain sender may get
    const QByteArray data = networking.postWithURL(networking.spliceURL(u"auth1"_s, u"x"_s), {}, &error);
    QTEST(!data.isNull(), "dataKept");
    QCOMPARE(error.isNull(), array);
    QBError ofCall;
    networking.getVcode({}, &ofCall);
    QTEST(ofCall.domain(), "domain");
    QTEST(ofCall.code(), "code");
    QVERIFY(!ofCall.localizedDescription().isEmpty());

    int ends = 0;
    networking.loginWithAccountName(u"other"_s, u"p"_s, {}, {}, [&](const QBError &failure, const ServerReply &) {
        ++ends;
        QTEST(failure.code(), "code");
    });
    QCOMPARE(ends, 1);
    QCOMPARE(client.globe.account().name, u"ann"_s);
    QVERIFY(!networking.requestUserInfo() && !networking.getServerConfig() && !networking.getHostInfo());
    QVERIFY(!networking.refreshToken() && networking.getWebTokenid().isNull());
    QTEST(networking.reachability(), "reachable");
    QVERIFY2(timer.elapsed() < 10'000, "every call has its time-out");
}

void TestApiFailures::refusesAnOversizedReply()
{
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 99999999999\r\n\r\n{"));
    QBError error;
    QVERIFY(client.networking.postWithURL(server.url(), {}, &error).isNull());
    QCOMPARE(error.code(), static_cast<qint64>(TransportError::ReplyTooLarge));
    QCOMPARE(server.complaint(), QString());
}

void TestApiFailures::reachesOnlyWithoutRedirect_data()
{
    QTest::addColumn<QList<ScriptedAnswer>>("answers");
    QTest::addColumn<bool>("reachable");
    const ScriptedAnswer good = ScriptedAnswer::json("{}");
    QTest::newRow("both pings") << QList{good, good} << true;
    QTest::newRow("any status") << QList{ScriptedAnswer::reply("", 500), ScriptedAnswer::reply("", 404)} << true;
    QTest::newRow("the second fails") << QList{good, ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n")} << false;
    QTest::newRow("the first fails") << QList{ScriptedAnswer::hang()} << false;
    QTest::newRow("redirected") << QList{ScriptedAnswer::redirect(u"/api/v1/pingelsewhere"_s), good} << false;
}

void TestApiFailures::reachesOnlyWithoutRedirect()
{
    QFETCH(QList<ScriptedAnswer>, answers);
    ScriptedServer server;
    ApiClient client(server);
    for (const ScriptedAnswer &answer : answers)
        server.expect("POST /api/v1/ping", answer);
    QTEST(client.networking.reachability(), "reachable");
    QCOMPARE(server.complaint(), QString());
}

void TestApiFailures::probesHttpsThenHttp_data()
{
    QTest::addColumn<int>("security");
    QTest::addColumn<QList<ScriptedAnswer>>("answers");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("https");
    using S = ScriptedServer::Security;
    const auto row = [](const char *name, S security, const QList<ScriptedAnswer> &answers, int result, bool https) {
        QTest::newRow(name) << static_cast<int>(security) << answers << result << https;
    };
    const ScriptedAnswer good = ScriptedAnswer::json("{}");
    const ScriptedAnswer bad = ScriptedAnswer::reply("", 400);
    row("https", S::Either, {good}, 1, true);
    row("https, any other status", S::Either, {ScriptedAnswer::reply("", 500)}, 1, true);
    row("https refused with 400", S::Either, {bad, good}, 1, false);
    row("https cut, http with 400", S::Either, {ScriptedAnswer::raw(""), bad}, 1, false);
    row("http only", S::Plain, {good}, 1, false);
    row("https only, with 400", S::Tls, {bad}, 2, false);
    row("both hang", S::Either, {ScriptedAnswer::hang(), ScriptedAnswer::hang()}, 2, false);
}

void TestApiFailures::probesHttpsThenHttp()
{
    QFETCH(int, security);
    QFETCH(QList<ScriptedAnswer>, answers);
    QFETCH(int, result);
    QFETCH(bool, https);
    ScriptedServer server(static_cast<ScriptedServer::Security>(security));
    for (const ScriptedAnswer &answer : answers)
        server.expect("POST /api/v1/ping HTTP/1.1\r\n", answer);
    ApiClient client(u"old.invalid"_s, 1, false);
    client.signIn();
    QVERIFY(client.globe.update());
    QCOMPARE(static_cast<int>(probeServer(client, u"127.0.0.1"_s, server.portText()).get()), result);
    QCOMPARE(client.globe.account().tokenID, QString());
    QCOMPARE(client.globe.account().name, u"ann"_s);
    const bool found = result == 1;
    QCOMPARE(client.networking.serverAddress(), found ? u"127.0.0.1"_s : u"old.invalid"_s);
    QCOMPARE(client.networking.isHttpsServer(), https);
    QCOMPARE(client.networking.isHttpServer(), found && !https);
    const QBGlobeInformation stored(client.globe.path(), true);
    QCOMPARE(stored.server().authPort, found ? server.portText() : u"1"_s);
    QCOMPARE(stored.account().tokenID, QString());
    QCOMPARE(server.complaint(), QString());
}

void TestApiFailures::dropsAnOvertakenProbe()
{
    ScriptedServer slow;
    ScriptedServer quick;
    ScriptedAnswer late = ScriptedAnswer::json("{}");
    late.drip = std::chrono::milliseconds(3);
    slow.expect("POST /api/v1/ping ", late);
    quick.expect("POST /api/v1/ping ", ScriptedAnswer::json("{}"));
    ApiClient client(slow);
    std::future<ServerConfigResult> first = probeServer(client, u"localhost"_s, slow.portText());
    QVERIFY(slow.waitForRequests(1));
    QCOMPARE(probeServer(client, u"127.0.0.1"_s, quick.portText()).get(), ServerConfigResult::Succeeded);
    QCOMPARE(first.get(), ServerConfigResult::Failed);
    QCOMPARE(client.networking.serverAuthPort(), quick.portText());
}

void TestApiFailures::stopsAnOvertakenProbe()
{
    ScriptedServer slow(ScriptedServer::Security::Either);
    ScriptedServer quick;
    slow.expect("POST /api/v1/ping ", ScriptedAnswer::hang());
    quick.expect("POST /api/v1/ping ", ScriptedAnswer::json("{}"));
    ApiClient client(slow);
    std::future<ServerConfigResult> first = probeServer(client, u"127.0.0.1"_s, slow.portText());
    QVERIFY(slow.waitForRequests(1));
    QCOMPARE(probeServer(client, u"127.0.0.1"_s, quick.portText()).get(), ServerConfigResult::Succeeded);
    QCOMPARE(first.get(), ServerConfigResult::Failed);
    QCOMPARE(slow.complaint(), QString());
}

void TestApiFailures::signsOutDespiteARefusedSignIn()
{
    ScriptedServer server;
    ApiClient client(server, std::chrono::seconds(5));
    client.signIn();
    QVERIFY(client.globe.update());
    ScriptedAnswer late = ScriptedAnswer::json("{}");
    late.drip = std::chrono::milliseconds(4);
    server.expect("POST /api/v1/auth1?method=logout", late)
        .expect("POST /api/v1/auth1?method=getnew", ScriptedAnswer::json(R"({"errcode":401003})"));
    std::thread signOut([&] { client.networking.logoutCurrentAccountWithHandle({}); });
    const bool asked = server.waitForRequests(1);
    int refusals = 0;
    client.networking.loginWithAccountName(u"other"_s, u"p"_s, {}, {},
                                           [&](const QBError &error, const ServerReply &) { refusals += !!error; });
    signOut.join();
    QVERIFY(asked);
    QCOMPARE(refusals, 1);
    QVERIFY(!client.networking.isLogin());
    const QBGlobeInformation stored(client.globe.path(), true);
    QCOMPARE(stored.account().name + stored.account().userID + stored.account().tokenID, QString());
    QCOMPARE(server.complaint(), QString());
}

void TestApiFailures::signsOutSoonDespiteASilentServer()
{
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    server.expect("POST /api/v1/auth1?method=logout", ScriptedAnswer::hang());
    ClientServices services = client.services();
    services.callTimeout = std::chrono::seconds(20);
    services.logoutTimeout = std::chrono::milliseconds(200);
    QBNetworking networking(client.globe, client.transport, client.defaults, services);
    QElapsedTimer timer;
    timer.start();
    networking.logoutCurrentAccountWithHandle({});
    QVERIFY2(timer.elapsed() < 5000, "the login window waits for this");
    QVERIFY(!networking.isLogin());
    QCOMPARE(server.complaint(), QString());
}

void TestApiFailures::signsInWithoutHandler_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("signedIn");
    QTest::newRow("refused") << R"({"errcode":401003})"_ba << false;
    QTest::newRow("accepted") << R"({"expires":1,"userid":"u","tokenid":"t"})"_ba << true;
}

void TestApiFailures::signsInWithoutHandler()
{
    QFETCH(QByteArray, reply);
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::json(reply));
    ApiClient client(server);
    client.networking.loginWithAccountName(u"ann"_s, u"p"_s, {}, {}, {});
    QTEST(client.networking.isLogin(), "signedIn");
}

void TestApiFailures::pingsTheStoredServer()
{
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST /api/v1/ping ", ScriptedAnswer::reply("", 500))
        .expect("POST /v1/ping ", ScriptedAnswer::json("{}"))
        .expect("POST /v1/ping ", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n"));
    QVERIFY(client.networking.pingStoredServer(true));
    QVERIFY(client.networking.pingStoredServer(false));
    QVERIFY(!client.networking.pingStoredServer(false));
    QCOMPARE(server.complaint(), QString());
}

REGISTER_TEST(TestApiFailures)
#include "TestApiFailures.moc"
