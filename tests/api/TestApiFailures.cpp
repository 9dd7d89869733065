#include "ApiScene.h"

#include "support/Rows.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

#include <thread>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace Qt::StringLiterals;

namespace
{

enum class Place { Plain, Secure, PlainOnSecurePort, SecureOnPlainPort, Nobody };

const ScriptedAnswer good = ScriptedAnswer::json("{}");

ScriptedAnswer dripping(int milliseconds)
{
    ScriptedAnswer late = good;
    late.drip = std::chrono::milliseconds(milliseconds);
    return late;
}

} // namespace
Q_DECLARE_METATYPE(Place)
Q_DECLARE_METATYPE(ScriptedAnswer)

/// What the client makes of a server that fails: one table of faults, each met by every kind of call.
class TestApiFailures : public ApiScene
{
    Q_OBJECT

private Q_SLOTS:
    void init() { open(); }
    void cleanup() { close(); }

    /// What the transport makes of broken bytes is its own test; here each kind of end meets every kind of call.
    void meetsEveryFault_data()
    {
        const testing::Rows<Place, ScriptedAnswer, qint64, bool, bool> row("place", "answer", "code", "dataKept",
                                                                           "reachable");
        const auto transport = [&row](const char *name, const ScriptedAnswer &answer, TransportError error,
                                      Place place = Place::Plain) {
            row(name, place, answer, static_cast<qint64>(error), false, false);
        };
        const auto read = [&row](const char *name, const ScriptedAnswer &answer, qint64 code,
                                 Place place = Place::Plain) { row(name, place, answer, code, true, true); };
        using A = ScriptedAnswer;
        using E = TransportError;
        transport("server down", {}, E::CannotConnect, Place::Nobody);
        transport("refusing", A::raw(""), E::ConnectionLost);
        transport("hanging", A::hang(), E::TimedOut);
        transport("not HTTP", A::raw("\x01\x02garbage\r\n\r\n"), E::BadReply);
        transport("redirect to nowhere", A::redirect(u"http://127.0.0.1:1/"_s), E::CannotConnect);
        transport("redirect to another scheme", A::redirect(u"ftp://127.0.0.1/"_s), E::BadReply);
        transport("redirect in a circle", A::redirect(u"/api/v1/ping"_s), E::TooManyRedirects);
        transport("plain on the secure port", good, E::ConnectionLost, Place::PlainOnSecurePort);
        transport("secure on the plain port", good, E::SecureConnectionFailed, Place::SecureOnPlainPort);
        read("not JSON", A::reply("<html>sign in to the hotel</html>"), -1011);
        read("wrong shape: array", A::json("[1,2]"), -1011);
        read("wrong shape: number", A::json("17"), -1011);
        read("404 without error body", A::reply("", 404), -1011);
        read("502 with a page", A::reply("<html>Bad Gateway</html>", 502), -1011);
        read("401 with error body", A::json("{\"errcode\":401001,\"errmsg\":\"m\"}", 401), 401001);
        read("500 with error body", A::json("{\"errcode\":500001}", 500), 500001);
        // Any certificate is accepted, so the fault is the server's answer, not its certificate.
        read("unknown certificate", A::json("{\"errcode\":401003}"), 401003, Place::Secure);
    }
    void meetsEveryFault()
    {
        QFETCH(Place, place);
        QFETCH(ScriptedAnswer, answer);
        QFETCH(qint64, code);
        const bool tls = place == Place::Secure || place == Place::PlainOnSecurePort;
        server =
            std::make_unique<ScriptedServer>(tls ? ScriptedServer::Security::Tls : ScriptedServer::Security::Plain);
        server->answerAll(answer);
        client = std::make_unique<ApiClient>(u"127.0.0.1"_s, server->port(),
                                             place == Place::Secure || place == Place::SecureOnPlainPort);
        client->signIn();
        if (place == Place::Nobody)
            server->stop();
        QElapsedTimer timer;
        timer.start();

        QBError error;
        const bool array = answer.bytes.endsWith("[1,2]"); // which is what the plain sender may get
        QTEST(!networking().postWithURL(networking().spliceURL(u"auth1"_s, u"x"_s), {}, &error).isNull(), "dataKept");
        QCOMPARE(error.isNull(), array);
        QBError ofCall;
        networking().getVcode({}, &ofCall);
        QCOMPARE(ofCall.domain(), code < 0 ? QBError::transportDomain() : QBError::serverDomain());
        QCOMPARE(ofCall.code(), code);
        QVERIFY(!ofCall.localizedDescription().isEmpty());

        int ends = 0;
        networking().loginWithAccountName(u"other"_s, u"p"_s, {}, {}, [&](const QBError &failure, const ServerReply &) {
            ++ends;
            QCOMPARE(failure.code(), code);
        });
        QCOMPARE(ends, 1);
        QCOMPARE(client->globe.account().name, u"ann"_s);
        QVERIFY(!networking().requestUserInfo() && !networking().getServerConfig() && !networking().getHostInfo());
        QVERIFY(!networking().refreshToken() && networking().getWebTokenid().isNull());
        QTEST(networking().reachability(), "reachable");
        QVERIFY2(timer.elapsed() < 10'000, "every call has its time-out");
    }

    void refusesAnOversizedReply()
    {
        server->expect("POST ", Answer::raw("HTTP/1.1 200 OK\r\nContent-Length: 99999999999\r\n\r\n{"));
        QBError error;
        QVERIFY(networking().postWithURL(server->url(), {}, &error).isNull());
        QCOMPARE(error.code(), static_cast<qint64>(TransportError::ReplyTooLarge));
    }

    void reachesOnlyWithoutRedirect_data()
    {
        const testing::Rows<QList<ScriptedAnswer>, bool> row("answers", "reachable");
        row("both pings", QList{good, good}, true);
        row("any status", QList{Answer::reply("", 500), Answer::reply("", 404)}, true);
        row("the second fails", QList{good, Answer::raw("HTTP/1.1 200 OK\r\n")}, false);
        row("the first fails", QList{Answer::hang()}, false);
        row("redirected", QList{Answer::redirect(u"/api/v1/pingelsewhere"_s), good}, false);
    }
    void reachesOnlyWithoutRedirect()
    {
        QFETCH(QList<ScriptedAnswer>, answers);
        for (const ScriptedAnswer &answer : answers)
            server->expect("POST /api/v1/ping", answer);
        QTEST(networking().reachability(), "reachable");
    }

    void probesHttpsThenHttp_data()
    {
        const testing::Rows<int, QList<ScriptedAnswer>, bool, bool> row("security", "answers", "found", "https");
        const int plain = static_cast<int>(ScriptedServer::Security::Plain);
        const int tls = static_cast<int>(ScriptedServer::Security::Tls);
        const int either = static_cast<int>(ScriptedServer::Security::Either);
        const ScriptedAnswer bad = Answer::reply("", 400);
        row("https", either, QList{good}, true, true);
        row("https, any other status", either, QList{Answer::reply("", 500)}, true, true);
        row("https refused with 400", either, QList{bad, good}, true, false);
        row("https cut, http with 400", either, QList{Answer::raw(""), bad}, true, false);
        row("http only", plain, QList{good}, true, false);
        row("https only, with 400", tls, QList{bad}, false, false);
        row("both hang", either, QList{Answer::hang(), Answer::hang()}, false, false);
    }
    void probesHttpsThenHttp()
    {
        QFETCH(int, security);
        QFETCH(QList<ScriptedAnswer>, answers);
        QFETCH(bool, found);
        QFETCH(bool, https);
        server = std::make_unique<ScriptedServer>(static_cast<ScriptedServer::Security>(security));
        for (const ScriptedAnswer &answer : answers)
            server->expect("POST /api/v1/ping HTTP/1.1\r\n", answer);
        client = std::make_unique<ApiClient>(u"old.invalid"_s, 1, false);
        client->signIn();
        QVERIFY(client->globe.update());
        QCOMPARE(probeServer(*client, u"127.0.0.1"_s, server->portText()).get(),
                 found ? ServerConfigResult::Succeeded : ServerConfigResult::Failed);
        QCOMPARE(client->globe.account().tokenID, QString());
        QCOMPARE(client->globe.account().name, u"ann"_s);
        QCOMPARE(networking().serverAddress(), found ? u"127.0.0.1"_s : u"old.invalid"_s);
        QCOMPARE(networking().isHttpsServer(), https);
        QCOMPARE(networking().isHttpServer(), found && !https);
        QCOMPARE(stored().server().authPort, found ? server->portText() : u"1"_s);
        QCOMPARE(stored().account().tokenID, QString());
    }

    /// Whether its server is slow or silent, a probe ends when another one is begun, and changes nothing.
    void dropsAnOvertakenProbe()
    {
        for (const ScriptedAnswer &late : {dripping(3), Answer::hang()}) {
            open();
            ScriptedServer quick;
            server->expect("POST /api/v1/ping ", late);
            quick.expect("POST /api/v1/ping ", good);
            std::future<ServerConfigResult> first = probeServer(*client, u"localhost"_s, server->portText());
            QVERIFY(server->waitForRequests(1));
            QCOMPARE(probeServer(*client, u"127.0.0.1"_s, quick.portText()).get(), ServerConfigResult::Succeeded);
            QCOMPARE(first.get(), ServerConfigResult::Failed);
            QCOMPARE(networking().serverAuthPort(), quick.portText());
            QCOMPARE(server->complaint(), QString());
        }
    }

    void signsOutDespiteARefusedSignIn()
    {
        open(std::chrono::seconds(5));
        client->signIn();
        QVERIFY(client->globe.update());
        server->expect("POST /api/v1/auth1?method=logout", dripping(4));
        expect("POST /api/v1/auth1?method=getnew", "{\"errcode\":401003}");
        std::thread signOut([&] { networking().logoutCurrentAccountWithHandle({}); });
        const bool asked = server->waitForRequests(1);
        int refusals = 0;
        networking().loginWithAccountName(u"other"_s, u"p"_s, {}, {},
                                          [&](const QBError &error, const ServerReply &) { refusals += !!error; });
        signOut.join();
        QVERIFY(asked);
        QCOMPARE(refusals, 1);
        QVERIFY(!networking().isLogin());
        const QBGlobeAccount kept = stored().account();
        QCOMPARE(kept.name + kept.userID + kept.tokenID, QString());
    }

    void signsOutSoonDespiteASilentServer()
    {
        client->signIn();
        server->expect("POST /api/v1/auth1?method=logout", Answer::hang());
        ClientServices services = client->services();
        services.callTimeout = std::chrono::seconds(20);
        services.logoutTimeout = std::chrono::milliseconds(200);
        QBNetworking patient(client->globe, client->transport, client->defaults, services);
        QElapsedTimer timer;
        timer.start();
        patient.logoutCurrentAccountWithHandle({});
        QVERIFY2(timer.elapsed() < 5000, "the login window waits for this");
        QVERIFY(!patient.isLogin());
    }

    void pingsTheStoredServer()
    {
        server->expect("POST /api/v1/ping ", Answer::reply("", 500))
            .expect("POST /v1/ping ", good)
            .expect("POST /v1/ping ", Answer::raw("HTTP/1.1 200 OK\r\n"));
        QVERIFY(networking().pingStoredServer(true));
        QVERIFY(networking().pingStoredServer(false));
        QVERIFY(!networking().pingStoredServer(false));
    }
};

REGISTER_TEST(TestApiFailures)
#include "TestApiFailures.moc"
