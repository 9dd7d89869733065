#include "api/HttpTransport.h"
#include "support/ScriptedServer.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTest>

#include <thread>
#include <vector>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

HttpRequest requestTo(const QString &url, const QByteArray &body = {})
{
    HttpRequest request;
    request.url = url;
    request.body = body;
    request.timeout = 5s;
    return request;
}

qint64 code(TransportError error)
{
    return static_cast<qint64>(error);
}

} // namespace

class TestHttpTransport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sendsExactBytes();
    void changesTheMethodOnOneConnection();
    void namesEveryFault_data();
    void namesEveryFault();
    void refusesWhatIsNoAddress_data();
    void refusesWhatIsNoAddress();
    void findsNobodyOnAClosedPort();
    void speaksTlsOnlyWhereTlsIs();
    void followsRedirects_data();
    void followsRedirects();
    void neverFollowsFromSecureToPlain();
    void givesHttpErrorsAsReplies();
    void boundsTheReply();
    void keepsConnectionsAlive();
    void dropsIdleConnections();
    void sharesAndForgetsCookies();
    void usesTheDesktopsProxy();
    void abortsAtShutDown();
    void servesManyThreads();
};

void TestHttpTransport::sendsExactBytes()
{
    ScriptedServer server;
    server.expect("POST /a?b=c%20d HTTP/1.1\r\n", ScriptedAnswer::json("{}"))
        .expect("POST /empty HTTP/1.1\r\n", ScriptedAnswer::json("{}"));
    HttpTransport transport;
    HttpRequest request = requestTo(server.url(u"/a?b=c d"_s), "line\n\0zero"_ba);
    request.headers = {{"Content-Type", "text/odd"}};
    const HttpReply reply = transport.post(request);
    QVERIFY(!reply.error);
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.body, QByteArray("{}"));
    QCOMPARE(reply.contentType, QByteArray("application/json"));
    QCOMPARE(reply.finalUrl, request.url);
    QVERIFY(!transport.post(requestTo(server.url(u"/empty"_s))).error);

    const QByteArray host = "Host: 127.0.0.1:" + QByteArray::number(server.port()) + "\r\nAccept: */*\r\n";
    QCOMPARE(server.requests().at(0), "POST /a?b=c%20d HTTP/1.1\r\n" + host +
                                          "Content-Type: text/odd\r\nContent-Length: 10\r\n\r\n" + request.body);
    QCOMPARE(server.requests().at(1),
             "POST /empty HTTP/1.1\r\n" + host +
                 "Content-Length: 0\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n");
    QCOMPARE(server.complaint(), QString());
}

void TestHttpTransport::changesTheMethodOnOneConnection()
{
    ScriptedServer server;
    HttpTransport transport;
    HttpRequest request = requestTo(server.url(), "body");
    for (const QByteArray method : {"POST", "GET", "DELETE", "POST", "HEAD", "GET", "POST"}) {
        server.expect(method + " / HTTP/1.1\r\n", ScriptedAnswer::reply(method == "HEAD" ? "" : "answer"));
        request.method = method;
        const HttpReply reply = transport.send(request);
        QVERIFY2(!reply.error, method);
        QCOMPARE(reply.body, QByteArray(method == "HEAD" ? "" : "answer"));
        QCOMPARE(server.bodies().last(), QByteArray(method == "POST" ? "body" : ""));
    }
    QCOMPARE(server.connections(), 1);
    for (const QByteArray noMethod : {"", "GET /other", "GET\r\nX:", "G3T"}) {
        request.method = noMethod;
        QCOMPARE(transport.send(request).error.code(), code(TransportError::BadURL));
    }
    QCOMPARE(server.complaint(), QString());
}

void TestHttpTransport::namesEveryFault_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("hangs");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const QByteArray &bytes, TransportError error, bool hangs = false) {
        QTest::newRow(name) << bytes << hangs << static_cast<int>(error);
    };
    row("closed without a byte", "", TransportError::ConnectionLost);
    row("cut in the status line", "HTTP/1.1 20", TransportError::ConnectionLost);
    row("cut after the status line", "HTTP/1.1 200 OK\r\n", TransportError::ConnectionLost);
    row("cut inside the header", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\nServ", TransportError::ConnectionLost);
    row("cut before the header ends", "HTTP/1.1 200 OK\r\nServer: x\r\n", TransportError::ConnectionLost);
    row("cut inside the body", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{\"a\"", TransportError::ConnectionLost);
    row("cut inside a chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n8\r\n{\"a\"",
        TransportError::ConnectionLost);
    row("broken chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", TransportError::ConnectionLost);
    row("garbage", QByteArray(300, '\x07') + "\r\n\r\n", TransportError::BadReply);
    row("negative length", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n{}", TransportError::BadReply);
    row("one endless header line", "HTTP/1.1 200 OK\r\nA: " + QByteArray(300'000, 'x'), TransportError::ReplyTooLarge);
    row("endless header lines", "HTTP/1.1 200 OK\r\n" + QByteArray("A: b\r\n").repeated(60'000),
        TransportError::ReplyTooLarge);
    row("silence", "", TransportError::TimedOut, true);
    row("silence inside the header", "HTTP/1.1 200 OK\r\nCon", TransportError::TimedOut, true);
    row("silence inside the body", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{", TransportError::TimedOut, true);
}

void TestHttpTransport::namesEveryFault()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, hangs);
    QFETCH(int, expected);
    for (const auto security : {ScriptedServer::Security::Plain, ScriptedServer::Security::Tls}) {
        ScriptedServer server(security);
        server.expect("POST /x ", {bytes, hangs ? ScriptedAnswer::Ending::Hang : ScriptedAnswer::Ending::Close});
        HttpTransport transport;
        HttpRequest request = requestTo(server.url(u"/x"_s), "body");
        request.timeout = hangs ? 300ms : 5s;
        QElapsedTimer timer;
        timer.start();
        const HttpReply reply = transport.post(request);
        QVERIFY2(timer.elapsed() < 4000, "it must not outlast its time");
        QCOMPARE(reply.error.domain(), QBError::transportDomain());
        QCOMPARE(reply.error.code(), expected);
        QVERIFY(reply.error.localizedDescription().size() > 10);
        QCOMPARE(server.complaint(), QString());
    }
}

void TestHttpTransport::refusesWhatIsNoAddress_data()
{
    QTest::addColumn<QString>("url");
    for (const char *url : {"", "nonsense", "file:///etc/passwd", "ftp://127.0.0.1/", "http://", "http:///x",
                            "http://a b/", "http://::1:80/", "http://127.0.0.1:99999/", "http://[::1/", "//host/x"})
        QTest::newRow(url) << QString::fromLatin1(url);
}

void TestHttpTransport::refusesWhatIsNoAddress()
{
    QFETCH(QString, url);
    HttpTransport transport;
    QCOMPARE(transport.post(requestTo(url)).error.code(), code(TransportError::BadURL));
}

void TestHttpTransport::findsNobodyOnAClosedPort()
{
    ScriptedServer server;
    const QString url = server.url();
    server.stop();
    HttpTransport transport;
    QCOMPARE(transport.post(requestTo(url)).error.code(), code(TransportError::CannotConnect));
}

void TestHttpTransport::speaksTlsOnlyWhereTlsIs()
{
    ScriptedServer secure(ScriptedServer::Security::Tls);
    ScriptedServer plain;
    secure.expect("POST / ", ScriptedAnswer::json("{}"));
    HttpTransport transport;
    QVERIFY(!transport.post(requestTo(secure.url())).error);

    HttpRequest strict = requestTo(secure.url());
    strict.acceptAnyCertificate = false;
    QCOMPARE(transport.post(strict).error.code(), code(TransportError::SecureConnectionFailed));

    const QString plainOnTls = u"http://127.0.0.1:"_s + secure.portText();
    QVERIFY(transport.post(requestTo(plainOnTls)).error);
    const QString tlsOnPlain = u"https://127.0.0.1:"_s + plain.portText();
    HttpRequest impatient = requestTo(tlsOnPlain);
    impatient.timeout = 300ms; // the plain server waits for the rest of what it takes for a request
    QVERIFY(transport.post(impatient).error);
    QCOMPARE(secure.complaint() + plain.complaint(), QString());
}

void TestHttpTransport::followsRedirects_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {301, 302, 303, 307, 308})
        QTest::newRow(QByteArray::number(status).constData()) << status;
}

void TestHttpTransport::followsRedirects()
{
    QFETCH(int, status);
    ScriptedServer server;
    server.expect("POST /from ", ScriptedAnswer::redirect(server.url(u"/to"_s), status))
        .expect("POST /to ", ScriptedAnswer::json("[1]"));
    HttpTransport transport;
    const HttpReply reply = transport.post(requestTo(server.url(u"/from"_s), "payload"));
    QVERIFY(!reply.error);
    QCOMPARE(reply.finalUrl, server.url(u"/to"_s));
    QCOMPARE(reply.body, QByteArray("[1]"));
    QCOMPARE(server.bodies(), QByteArrayList({"payload", "payload"}));
    QCOMPARE(server.complaint(), QString());
}

void TestHttpTransport::neverFollowsFromSecureToPlain()
{
    ScriptedServer secure(ScriptedServer::Security::Tls);
    ScriptedServer plain;
    secure.expect("POST /down ", ScriptedAnswer::redirect(plain.url()));
    secure.answerAll(ScriptedAnswer::redirect(secure.url(u"/round"_s)));
    HttpTransport transport;
    QCOMPARE(transport.post(requestTo(secure.url(u"/down"_s), "secret")).error.code(),
             code(TransportError::SecureConnectionFailed));
    QCOMPARE(plain.connections(), 0);
    QCOMPARE(transport.post(requestTo(secure.url(u"/round"_s))).error.code(), code(TransportError::TooManyRedirects));
    QCOMPARE(secure.requests().size(), 12);

    plain.expect("POST /file ", ScriptedAnswer::redirect(u"file:///etc/passwd"_s));
    QVERIFY(transport.post(requestTo(plain.url(u"/file"_s))).error);
}

void TestHttpTransport::givesHttpErrorsAsReplies()
{
    ScriptedServer server;
    HttpTransport transport;
    for (const int status : {302, 400, 401, 404, 500, 503}) {
        server.expect("POST ", ScriptedAnswer::reply("why", status));
        const HttpReply reply = transport.post(requestTo(server.url()));
        QVERIFY(!reply.error);
        QCOMPARE(reply.status, status);
        QCOMPARE(reply.body, QByteArray("why"));
    }
    server.expect("POST ", ScriptedAnswer::reply("", 204));
    const HttpReply empty = transport.post(requestTo(server.url()));
    QVERIFY(!empty.body.isNull() && empty.body.isEmpty());
    QCOMPARE(server.complaint(), QString());
}

void TestHttpTransport::boundsTheReply()
{
    ScriptedServer server;
    const QByteArray thousand(1000, 'x');
    server.expect("POST ", ScriptedAnswer::reply(thousand))
        .expect("POST ", ScriptedAnswer::reply(thousand + "x"))
        .expect("POST ", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n\r\n" + thousand + "x"));
    HttpTransport transport;
    HttpRequest request = requestTo(server.url());
    request.replyLimit = 1000;
    QCOMPARE(transport.post(request).body, thousand);
    QCOMPARE(transport.post(request).error.code(), code(TransportError::ReplyTooLarge));
    QCOMPARE(transport.post(request).error.code(), code(TransportError::ReplyTooLarge));
    QCOMPARE(server.complaint(), QString());

    ScriptedServer slow;
    ScriptedAnswer drip = ScriptedAnswer::json("{}");
    drip.drip = 20ms; // some two seconds in all, never quiet for long
    slow.expect("POST ", drip);
    HttpRequest hurried = requestTo(slow.url());
    hurried.timeout = 300ms;
    QCOMPARE(transport.post(hurried).error.code(), code(TransportError::TimedOut));
}

void TestHttpTransport::keepsConnectionsAlive()
{
    for (const auto security : {ScriptedServer::Security::Plain, ScriptedServer::Security::Tls}) {
        ScriptedServer server(security);
        server.answerAll(ScriptedAnswer::json("{}"));
        HttpTransport transport;
        for (int i = 0; i < 20; ++i)
            QVERIFY(!transport.post(requestTo(server.url())).error);
        QCOMPARE(server.connections(), 1);
        HttpRequest fresh = requestTo(server.url());
        fresh.freshConnection = true;
        QVERIFY(!transport.post(fresh).error);
        QCOMPARE(server.connections(), 2);
    }
}

void TestHttpTransport::dropsIdleConnections()
{
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::json("{}"));
    HttpTransport transport(200ms);
    for (int round = 1; round <= 2; ++round) {
        QVERIFY(!transport.post(requestTo(server.url())).error);
        QVERIFY(server.waitForOpenConnections(0));
        QCOMPARE(server.connections(), round);
        QTRY_COMPARE(transport.idleHandles(), 0);
    }
}

void TestHttpTransport::sharesAndForgetsCookies()
{
    ScriptedServer server;
    server.expect("POST /set ", ScriptedAnswer::reply("{}", 200, "Set-Cookie: session=one; Path=/\r\n"));
    server.answerAll(ScriptedAnswer::json("{}"));
    HttpTransport transport;
    QVERIFY(!transport.post(requestTo(server.url(u"/set"_s))).error);
    // Calls at the same time need more than one handle; each of them must send the cookie.
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] { transport.post(requestTo(server.url(u"/use"_s))); });
    for (std::thread &thread : threads)
        thread.join();
    for (const QByteArray &request : server.requests().mid(1))
        QVERIFY(request.contains("Cookie: session=one\r\n"));
    transport.deleteCookies();
    transport.post(requestTo(server.url(u"/after"_s)));
    QCOMPARE(server.requests().size(), 6);
    QVERIFY(!server.requests().last().contains("Cookie:"));
}

void TestHttpTransport::usesTheDesktopsProxy()
{
    ScriptedServer proxy;
    proxy.expect("POST http://documents.invalid/x HTTP/1.1\r\n", ScriptedAnswer::json("{}"));
    qputenv("http_proxy", "http://127.0.0.1:" + QByteArray::number(proxy.port()));
    HttpTransport transport;
    const HttpReply reply = transport.post(requestTo(u"http://documents.invalid/x"_s));
    qunsetenv("http_proxy");
    QVERIFY2(!reply.error, qPrintable(reply.error.localizedDescription()));
    QCOMPARE(proxy.complaint(), QString());
}

void TestHttpTransport::abortsAtShutDown()
{
    ScriptedServer server;
    for (int i = 0; i < 3; ++i)
        server.expect("POST ", ScriptedAnswer::hang());
    HttpTransport transport;
    std::vector<std::thread> threads;
    std::atomic<int> cancelled = 0;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            cancelled += transport.post(requestTo(server.url())).error.code() == code(TransportError::Cancelled);
        });
    QVERIFY(server.waitForRequests(3));
    QElapsedTimer timer;
    timer.start();
    transport.shutDown();
    for (std::thread &thread : threads)
        thread.join();
    QVERIFY2(timer.elapsed() < 100, qPrintable(u"took %1 ms"_s.arg(timer.elapsed())));
    QCOMPARE(cancelled.load(), 3);
    QCOMPARE(transport.post(requestTo(server.url())).error.code(), code(TransportError::Cancelled));
    QCOMPARE(server.complaint(), QString());
}

void TestHttpTransport::servesManyThreads()
{
    constexpr int threadCount = 8;
    constexpr int calls = 50;
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::reply("{}", 200, "Set-Cookie: a=b; Path=/\r\n"));
    HttpTransport transport;
    std::vector<std::thread> threads;
    std::atomic<int> good = 0;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            for (int call = 0; call < calls; ++call)
                good += transport.post(requestTo(server.url(), QByteArray::number(call))).body == "{}";
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(good.load(), threadCount * calls);
    QVERIFY(server.connections() <= threadCount);
    QVERIFY(transport.idleHandles() <= threadCount);
}

REGISTER_TEST(TestHttpTransport)
#include "TestHttpTransport.moc"
