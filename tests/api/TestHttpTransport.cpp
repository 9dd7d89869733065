#include "api/HttpTransport.h"
#include "support/Rows.h"
#include "support/ScriptedServer.h"
#include "support/TestMain.h"
#include "support/Variable.h"

#include <QElapsedTimer>

#include <thread>
#include <vector>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

using Security = ScriptedServer::Security;
using E = TransportError;

HttpRequest requestTo(const QString &url, const QByteArray &body = {}, std::chrono::milliseconds timeout = 5s)
{
    HttpRequest request;
    request.url = url;
    request.body = body;
    request.timeout = timeout;
    return request;
}

const ScriptedAnswer object = ScriptedAnswer::json("{}");

} // namespace

class TestHttpTransport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        server = std::make_unique<ScriptedServer>();
        transport = std::make_unique<HttpTransport>();
    }
    void cleanup()
    {
        QCOMPARE(server->complaint(), QString());
        transport.reset();
    }

    void sendsExactBytes()
    {
        server->expect("POST /a?b=c%20d HTTP/1.1\r\n", object).expect("POST /empty HTTP/1.1\r\n", object);
        HttpRequest request = requestTo(server->url(u"/a?b=c d"_s), "line\n\0zero"_ba);
        request.headers = {{"Content-Type", "text/odd"}};
        const HttpReply reply = transport->post(request);
        QVERIFY(!reply.error);
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.body, "{}"_ba);
        QCOMPARE(reply.contentType, "application/json"_ba);
        QCOMPARE(reply.finalUrl, request.url);
        QVERIFY(!post(u"/empty"_s).error);

        const QByteArray host = "Host: 127.0.0.1:" + QByteArray::number(server->port()) + "\r\nAccept: */*\r\n";
        QCOMPARE(server->requests().at(0), "POST /a?b=c%20d HTTP/1.1\r\n" + host +
                                               "Content-Type: text/odd\r\nContent-Length: 10\r\n\r\n" + request.body);
        QCOMPARE(server->requests().at(1),
                 "POST /empty HTTP/1.1\r\n" + host +
                     "Content-Length: 0\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n");
    }

    void changesTheMethodOnOneConnection()
    {
        HttpRequest request = requestTo(server->url(), "body");
        for (const QByteArray method : {"POST", "GET", "DELETE", "POST", "HEAD", "GET", "POST"}) {
            server->expect(method + " / HTTP/1.1\r\n", ScriptedAnswer::reply(method == "HEAD" ? "" : "answer"));
            request.method = method;
            const HttpReply reply = transport->send(request);
            QVERIFY2(!reply.error, method);
            QCOMPARE(reply.body, QByteArray(method == "HEAD" ? "" : "answer"));
            QCOMPARE(server->bodies().last(), QByteArray(method == "POST" ? "body" : ""));
        }
        QCOMPARE(server->connections(), 1);
        for (const QByteArray noMethod : {"", "GET /other", "GET\r\nX:", "G3T"}) {
            request.method = noMethod;
            QVERIFY2(fails(transport->send(request), E::BadURL), noMethod);
        }
    }

    void namesEveryFault_data()
    {
        const testing::Rows<QByteArray, bool, int> row("bytes", "hangs", "code");
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const auto faults = [&row](E error, bool hangs, const QByteArrayList &replies) {
            for (const QByteArray &bytes : replies)
                row(bytes.left(60).simplified().constData(), bytes, hangs, static_cast<int>(error));
        };
        faults(E::ConnectionLost, false,
               {"", "HTTP/1.1 20", ok, ok + "Content-Length: 9\r\nServ", ok + "Server: x\r\n",
                ok + "Content-Length: 9\r\n\r\n{\"a\"", ok + "Transfer-Encoding: chunked\r\n\r\n8\r\n{\"a\"",
                ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\n"});
        faults(E::BadReply, false, {QByteArray(300, '\x07') + "\r\n\r\n", ok + "Content-Length: -5\r\n\r\n{}"});
        faults(E::ReplyTooLarge, false,
               {ok + "A: " + QByteArray(300'000, 'x'), ok + QByteArray("A: b\r\n").repeated(60'000)});
        faults(E::TimedOut, true, {"", ok + "Con", ok + "Content-Length: 9\r\n\r\n{"});
    }
    void namesEveryFault()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, hangs);
        for (const Security security : {Security::Plain, Security::Tls}) {
            server = std::make_unique<ScriptedServer>(security);
            server->expect("POST /x ", {bytes, hangs ? ScriptedAnswer::Ending::Hang : ScriptedAnswer::Ending::Close});
            QElapsedTimer timer;
            timer.start();
            const HttpReply reply = transport->post(requestTo(server->url(u"/x"_s), "body", hangs ? 300ms : 5s));
            QVERIFY2(timer.elapsed() < 4000, "it must not outlast its time");
            QCOMPARE(reply.error.domain(), QBError::transportDomain());
            QTEST(static_cast<int>(reply.error.code()), "code");
            QVERIFY(reply.error.localizedDescription().size() > 10);
            QCOMPARE(server->complaint(), QString());
        }
    }

    void refusesWhatIsNoAddress()
    {
        for (const char *url : {"", "nonsense", "file:///etc/passwd", "ftp://127.0.0.1/", "http://", "http:///x",
                                "http://a b/", "http://::1:80/", "http://127.0.0.1:99999/", "http://[::1/", "//host/x"})
            QVERIFY2(fails(transport->post(requestTo(QString::fromLatin1(url))), E::BadURL), url);
        const QString url = server->url();
        server->stop();
        QVERIFY2(fails(transport->post(requestTo(url)), E::CannotConnect), "nobody on a closed port");
    }

    void speaksTlsOnlyWhereTlsIs()
    {
        ScriptedServer secure(Security::Tls);
        secure.expect("POST / ", object);
        HttpRequest request = requestTo(secure.url());
        QVERIFY(!transport->post(request).error);
        request.acceptAnyCertificate = false;
        QVERIFY(fails(transport->post(request), E::SecureConnectionFailed));
        QVERIFY(transport->post(requestTo(u"http://127.0.0.1:"_s + secure.portText())).error);
        // The plain server waits for the rest of what it takes for a request.
        QVERIFY(transport->post(requestTo(u"https://127.0.0.1:"_s + server->portText(), {}, 300ms)).error);
        QCOMPARE(secure.complaint(), QString());
    }

    void followsRedirects()
    {
        for (const int status : {301, 302, 303, 307, 308}) {
            server->expect("POST /from ", ScriptedAnswer::redirect(server->url(u"/to"_s), status))
                .expect("POST /to ", ScriptedAnswer::json("[1]"));
            const HttpReply reply = post(u"/from"_s, "payload");
            QVERIFY(!reply.error);
            QCOMPARE(reply.finalUrl, server->url(u"/to"_s));
            QCOMPARE(reply.body, "[1]"_ba);
            QCOMPARE(server->bodies().last(), "payload"_ba);
        }
    }

    void neverFollowsFromSecureToPlain()
    {
        ScriptedServer secure(Security::Tls);
        secure.expect("POST /down ", ScriptedAnswer::redirect(server->url()));
        secure.answerAll(ScriptedAnswer::redirect(secure.url(u"/round"_s)));
        QVERIFY(fails(transport->post(requestTo(secure.url(u"/down"_s), "secret")), E::SecureConnectionFailed));
        QCOMPARE(server->connections(), 0);
        QVERIFY(fails(transport->post(requestTo(secure.url(u"/round"_s))), E::TooManyRedirects));
        QCOMPARE(secure.requests().size(), 12);
        server->expect("POST /file ", ScriptedAnswer::redirect(u"file:///etc/passwd"_s));
        QVERIFY(post(u"/file"_s).error);
    }

    void givesHttpErrorsAsReplies()
    {
        for (const int status : {302, 400, 401, 404, 500, 503}) {
            server->expect("POST ", ScriptedAnswer::reply("why", status));
            const HttpReply reply = post();
            QVERIFY(!reply.error);
            QCOMPARE(reply.status, status);
            QCOMPARE(reply.body, "why"_ba);
        }
        server->expect("POST ", ScriptedAnswer::reply("", 204));
        const HttpReply empty = post();
        QVERIFY(!empty.body.isNull() && empty.body.isEmpty());
    }

    void boundsTheReply()
    {
        const QByteArray thousand(1000, 'x');
        server->expect("POST ", ScriptedAnswer::reply(thousand))
            .expect("POST ", ScriptedAnswer::reply(thousand + "x"))
            .expect("POST ", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n\r\n" + thousand + "x"));
        HttpRequest request = requestTo(server->url());
        request.replyLimit = 1000;
        QCOMPARE(transport->post(request).body, thousand);
        QVERIFY(fails(transport->post(request), E::ReplyTooLarge));
        QVERIFY(fails(transport->post(request), E::ReplyTooLarge));
        ScriptedAnswer drip = object;
        drip.drip = 20ms; // some two seconds in all, never quiet for long
        server->expect("POST ", drip);
        QVERIFY(fails(transport->post(requestTo(server->url(), {}, 300ms)), E::TimedOut));
    }

    void keepsConnectionsAlive()
    {
        for (const Security security : {Security::Plain, Security::Tls}) {
            server = std::make_unique<ScriptedServer>(security);
            server->answerAll(object);
            for (int i = 0; i < 20; ++i)
                QVERIFY(!post().error);
            QCOMPARE(server->connections(), 1);
            HttpRequest fresh = requestTo(server->url());
            fresh.freshConnection = true;
            QVERIFY(!transport->post(fresh).error);
            QCOMPARE(server->connections(), 2);
        }
    }

    void dropsIdleConnections()
    {
        server->answerAll(object);
        transport = std::make_unique<HttpTransport>(200ms);
        for (int round = 1; round <= 2; ++round) {
            QVERIFY(!post().error);
            QVERIFY(server->waitForOpenConnections(0));
            QCOMPARE(server->connections(), round);
            QTRY_COMPARE(transport->idleHandles(), 0);
        }
    }

    void sharesAndForgetsCookies()
    {
        server->expect("POST /set ", ScriptedAnswer::reply("{}", 200, "Set-Cookie: session=one; Path=/\r\n"));
        server->answerAll(object);
        QVERIFY(!post(u"/set"_s).error);
        // Calls at the same time need more than one handle; each of them must send the cookie.
        inThreads(4, [this] { post(u"/use"_s); });
        for (const QByteArray &request : server->requests().mid(1))
            QVERIFY(request.contains("Cookie: session=one\r\n"));
        transport->deleteCookies();
        post(u"/after"_s);
        QCOMPARE(server->requests().size(), 6);
        QVERIFY(!server->requests().last().contains("Cookie:"));
    }

    void usesTheDesktopsProxy()
    {
        server->expect("POST http://documents.invalid/x HTTP/1.1\r\n", object);
        const testing::Variable proxy("http_proxy", server->url(QString()));
        const HttpReply reply = transport->post(requestTo(u"http://documents.invalid/x"_s));
        QVERIFY2(!reply.error, qPrintable(reply.error.localizedDescription()));
    }

    void abortsAtShutDown()
    {
        for (int i = 0; i < 3; ++i)
            server->expect("POST ", ScriptedAnswer::hang());
        std::atomic<int> cancelled = 0;
        bool asked = false;
        QElapsedTimer timer;
        std::jthread stopping([&] {
            asked = server->waitForRequests(3);
            timer.start();
            transport->shutDown();
        });
        inThreads(3, [&] { cancelled += fails(post(), E::Cancelled); });
        stopping.join();
        QVERIFY(asked);
        QVERIFY2(timer.elapsed() < 100, qPrintable(u"took %1 ms"_s.arg(timer.elapsed())));
        QCOMPARE(cancelled.load(), 3);
        QVERIFY(fails(post(), E::Cancelled));
    }

    void servesManyThreads()
    {
        server->answerAll(ScriptedAnswer::reply("{}", 200, "Set-Cookie: a=b; Path=/\r\n"));
        std::atomic<int> good = 0;
        inThreads(8, [&] {
            for (int call = 0; call < 50; ++call)
                good += post(u"/"_s, QByteArray::number(call)).body == "{}";
        });
        QCOMPARE(good.load(), 8 * 50);
        QVERIFY(server->connections() <= 8);
        QVERIFY(transport->idleHandles() <= 8);
    }

private:
    HttpReply post(const QString &path = u"/"_s, const QByteArray &body = {})
    {
        return transport->post(requestTo(server->url(path), body));
    }
    static bool fails(const HttpReply &reply, TransportError error)
    {
        return reply.error.code() == static_cast<qint64>(error);
    }
    template <class Work> static void inThreads(int count, Work work)
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < count; ++i)
            threads.emplace_back(work);
    }

    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<HttpTransport> transport;
};

REGISTER_TEST(TestHttpTransport)
#include "TestHttpTransport.moc"
