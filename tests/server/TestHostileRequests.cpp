#include "server/ServerFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QTest>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;

namespace
{
/// Sends bytes as they are and returns what comes back up to the end of a JSON object or of the connection.
QByteArray exchange(int port, const QByteArray &bytes, bool hangUp)
{
    QTcpSocket socket;
    socket.connectToHost(u"127.0.0.1"_s, quint16(port));
    if (!socket.waitForConnected(5000))
        return {};
    socket.write(bytes);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(5000)) {
    }
    if (hangUp) {
        socket.disconnectFromHost();
        return {};
    }
    QByteArray reply;
    while (!reply.endsWith('}') && socket.waitForReadyRead(5000))
        reply += socket.readAll();
    return reply;
}
} // namespace

class TestHostileRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bodies_data()
    {
        const testing::Rows<QByteArray, int> row("body", "code");
        row("empty", {}, 400002);
        row("not json", "account=demo&password=x", 400001);
        row("cut", "{\"account\":\"demo\",\"pass", 400001);
        row("array", "[1,2]", 400001);
        row("text", "\"demo\"", 400001);
        row("two objects", "{}{}", 400001);
        row("deep arrays", QByteArray(200'000, '['), 400001);
        row("deep objects", QByteArray("{\"a\":").repeated(50'000), 400001);
        row("bad utf-8", "{\"account\":\"\xff\xfe\"}", 400001);
        row("zero bytes", QByteArray(100, '\0'), 400001);
        row("largest", "{\"account\":\"" + QByteArray(1024 * 1024 - 14, 'a') + "\"}", 400002);
        row("too large", QByteArray(1024 * 1024 + 1, ' '), 413001);
        row("far too large", QByteArray(20 * 1024 * 1024, ' '), 413001);
    }
    void bodies()
    {
        QFETCH(QByteArray, body);
        static const ServerFixture fixture;
        const Answer answer = fixture.post(u"/api/v1/auth1?method=getnew"_s, body);
        QTEST(answer.code(), "code");
        QCOMPARE(answer.status, answer.code() / 1000);
        QVERIFY(answer.json.contains("errmsg"_L1) && answer.json.contains("causemsg"_L1));
        QCOMPARE(fixture.post(u"/api/v1/ping"_s, {}).status, 200);
    }

    void targets()
    {
        const ServerFixture fixture;
        const auto code = [&fixture](const QString &target) {
            return fixture.post(target, "{\"a\":1}&method=getconfig").code();
        };
        for (const char *target : {"/", "/api/v1/auth9?method=getnew", "/api/v1/auth1?method=getnewer", "/api/v1/auth1",
                                   "/api/v1/auth1?x=1", "/api/v1/?method=getnew", "/api/v1/auth1/auth1?method=getnew",
                                   "/api/v1/../../etc/passwd", "/api/v1/auth1?method=getnew';DROP%20TABLE%20sessions--",
                                   "/api/v1/auth1?method=%zz%", "/api/v1/%E7%94%A8%E6%88%B7?method=%F0%9F%98%80"})
            QVERIFY2(code(QString::fromLatin1(target)) == 404001, target);
        QCOMPARE(code(u"/api/v1/"_s + QString(4000, u'a')), 404001);
        QCOMPARE(code(u"/api/v1/user?method=get&tokenid="_s + QString(4000, u'a')), 401001);
        QCOMPARE(code(u"/api/v1/user?method=get&tokenid='%20OR%201=1"_s), 401001);
    }

    /// One member of an acceptable body is replaced by each kind of value that it must not have.
    void wrongTypes_data()
    {
        const testing::Rows<QString, QJsonArray> row("member", "wrong"); // service, method, member
        const QJsonArray notText{
            1, true, QJsonValue::Null, QJsonArray{1}, QJsonObject{{u"a"_s, 1}}, QString(100'000, u'x')};
        const QJsonArray notObject{1, true, QJsonValue::Null, QJsonArray{1}, u"x"_s};
        const QJsonArray notNumber{true, QJsonValue::Null, QJsonArray{}, u"x"_s, u"nan"_s, -1, 1.5, 1e300};
        for (const char *member :
             {"auth1.getnew.account", "auth1.getnew.password", "auth1.getbythirdparty.thirdpartyid",
              "auth1.refreshtoken.tokenid", "auth1.refreshtoken.userid", "auth1.sendauthvcode.account",
              "auth1.sendauthvcode.password", "auth1.sendauthvcode.oldtelnum", "auth1.getvcode.uuid",
              "auth1.modifypassword.account", "auth1.modifypassword.oldpwd", "auth1.modifypassword.newpwd",
              "config.getoemconfigbysection.section", "update.check.platform", "update.check.version",
              "update.download.reqhost"})
            row(member, notText);
        for (const char *member : {"auth1.getnew.deviceinfo", "auth1.getnew.vcodeinfo",
                                   "auth1.getnew.dualfactorauthinfo", "auth1.getbythirdparty.params"})
            row(member, notObject);
        for (const char *member :
             {"auth1.refreshtoken.expirestype", "auth1.logout.ostype", "config.get.ostype",
              "config.setquickstartstatus.ostype", "redirect.gethostinfo.port", "update.download.osType"})
            row(member, notNumber);
        for (const char *member : {"redirect.gethostinfo.https", "update.download.usehttps"})
            row(member, QJsonArray{u"x"_s, 2, QJsonArray{}});
    }
    void wrongTypes()
    {
        QFETCH(QString, member);
        QFETCH(QJsonArray, wrong);
        static const ServerFixture fixture;
        static const QString token = fixture.signInToken();
        QJsonObject body{{u"tokenid"_s, token}, {u"expirestype"_s, 2}, {u"ostype"_s, 5},      {u"https"_s, 1},
                         {u"port"_s, 1},        {u"osType"_s, 3},      {u"usehttps"_s, false}};
        for (const char *text : {"account", "password", "thirdpartyid", "userid", "oldpwd", "newpwd", "section",
                                 "platform", "version", "reqhost"})
            body.insert(QLatin1String(text), u"x"_s);
        for (const QJsonValue &value : wrong) {
            body.insert(member.section(u'.', 2), value);
            QCOMPARE(fixture.call(member.section(u'.', 0, 1), body, token).code(), 400002);
        }
    }

    void rawBytes_data()
    {
        const testing::Rows<QByteArray, bool> row("bytes", "hangUp");
        const QByteArray start = "POST /api/v1/ping HTTP/1.1\r\nHost: h\r\n";
        row("nothing", {}, true);
        row("garbage", QByteArray("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11), true);
        row("half a header", start, true);
        row("half a body", start + "Content-Length: 1000\r\n\r\n{", true);
        row("length is no number", start + "Content-Length: x\r\n\r\n", false);
        row("endless length", start + "Content-Length: 99999999999999999999\r\n\r\n{}", true);
        row("no length", start + "\r\n{}", false);
        row("broken chunks", start + "Transfer-Encoding: chunked\r\n\r\nzz\r\n", false);
        row("other verb", "DELETE /api/v1/ping HTTP/1.1\r\nHost: h\r\n\r\n", false);
        row("ranges", "GET /x HTTP/1.1\r\nRange: bytes=" + QByteArray("0-1,").repeated(1500) + "\r\n\r\n", false);
        row("long line", "POST /" + QByteArray(100'000, 'a') + " HTTP/1.1\r\n\r\n", false);
    }
    void rawBytes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, hangUp);
        static const ServerFixture fixture;
        exchange(fixture.server->httpPort(), bytes, hangUp);
        exchange(fixture.server->httpsPort(), bytes, hangUp);
        QCOMPARE(fixture.post(u"/api/v1/ping"_s, {}).status, 200);
        QCOMPARE(fixture.post(u"/api/v1/ping"_s, {}, true).status, 200);
    }

    /// A chunked body has no announced length; it must be cut off all the same.
    void chunkedBodyIsBounded()
    {
        const ServerFixture fixture;
        const QByteArray chunk = "10000\r\n" + QByteArray(0x10000, ' ') + "\r\n";
        const QByteArray reply =
            exchange(fixture.server->httpPort(),
                     "POST /api/v1/ping HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n" +
                         chunk.repeated(32) + "0\r\n\r\n",
                     false);
        QVERIFY2(reply.contains("413001"), reply.left(200).constData());
    }

    /// What follows a body that cannot be read is not taken for another request.
    void brokenBodyEndsTheConnection()
    {
        const ServerFixture fixture;
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, quint16(fixture.server->httpPort()));
        QVERIFY(socket.waitForConnected(5000));
        socket.write("POST /api/v1/ping HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"
                     "POST /api/v1/ping HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\n\r\n{}");
        QByteArray reply;
        while (socket.waitForReadyRead(5000))
            reply += socket.readAll();
        QCOMPARE(socket.state(), QAbstractSocket::UnconnectedState);
        QVERIFY2(reply.contains("the request ends before its end"), reply.constData());
        QCOMPARE(reply.count("HTTP/1.1"), 1);
    }

    /// Connections that send nothing keep nobody waiting.
    void slowClients()
    {
        const ServerFixture fixture;
        std::vector<std::unique_ptr<QTcpSocket>> slow;
        for (int i = 0; i < 60; ++i) {
            slow.push_back(std::make_unique<QTcpSocket>());
            slow.back()->connectToHost(u"127.0.0.1"_s, quint16(fixture.server->httpPort()));
            QVERIFY(slow.back()->waitForConnected(5000));
            slow.back()->write("POST /api");
            QVERIFY(slow.back()->waitForBytesWritten(5000));
        }
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(fixture.post(u"/api/v1/ping"_s, {}).status, 200);
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }

    /// Stopping waits neither for idle connections nor for a late reply.
    void stopsAtOnce()
    {
        const ServerFixture fixture({{u"delay_ms"_s, 30'000}});
        QTcpSocket idle;
        idle.connectToHost(u"127.0.0.1"_s, quint16(fixture.server->httpPort()));
        QVERIFY(idle.waitForConnected(5000));
        std::thread waiting([&] { fixture.post(u"/api/v1/ping"_s, {}, true); });
        while (fixture.server->calls().isEmpty())
            std::this_thread::yield();
        QElapsedTimer timer;
        timer.start();
        fixture.server->stop();
        waiting.join();
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(fixture.server->httpPort(), -1);
    }

    void twoClientsAtOnce()
    {
        const ServerFixture fixture;
        std::atomic<int> good = 0;
        const auto use = [&](bool https) {
            for (int i = 0; i < 10; ++i) {
                const QString token = fixture.signInToken();
                const QString target = "/api/v1/user?method=get&tokenid="_L1 + token;
                good += fixture.post(target, {}, https).text("account") == demoName() ? 1 : 0;
                const QString leave = "/api/v1/auth1?method=logout&tokenid="_L1 + token;
                good += fixture.post(leave, "{\"ostype\":5}", https).status == 200 ? 1 : 0;
            }
        };
        std::thread other(use, true);
        use(false);
        other.join();
        QCOMPARE(good.load(), 40);
    }
};

REGISTER_TEST(TestHostileRequests)
#include "TestHostileRequests.moc"
