#include "server/ServerFixture.h"
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
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("code");
        QTest::newRow("empty") << QByteArray() << 400002;
        QTest::newRow("not json") << QByteArray("account=demo&password=x") << 400001;
        QTest::newRow("cut") << QByteArray("{\"account\":\"demo\",\"pass") << 400001;
        QTest::newRow("array") << QByteArray("[1,2]") << 400001;
        QTest::newRow("text") << QByteArray("\"demo\"") << 400001;
        QTest::newRow("two objects") << QByteArray("{}{}") << 400001;
        QTest::newRow("deep arrays") << QByteArray(200'000, '[') << 400001;
        QTest::newRow("deep objects") << QByteArray("{\"a\":").repeated(50'000) << 400001;
        QTest::newRow("bad utf-8") << QByteArray("{\"account\":\"\xff\xfe\"}") << 400001;
        QTest::newRow("zero bytes") << QByteArray(100, '\0') << 400001;
        QTest::newRow("largest") << "{\"account\":\"" + QByteArray(1024 * 1024 - 14, 'a') + "\"}" << 400002;
        QTest::newRow("too large") << QByteArray(1024 * 1024 + 1, ' ') << 413001;
        QTest::newRow("far too large") << QByteArray(20 * 1024 * 1024, ' ') << 413001;
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

    void targets_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("code");
        QTest::newRow("root") << u"/"_s << 404001;
        QTest::newRow("unknown service") << u"/api/v1/auth9?method=getnew"_s << 404001;
        QTest::newRow("unknown method") << u"/api/v1/auth1?method=getnewer"_s << 404001;
        QTest::newRow("no method") << u"/api/v1/auth1"_s << 404001;
        QTest::newRow("empty service") << u"/api/v1/?method=getnew"_s << 404001;
        QTest::newRow("two services") << u"/api/v1/auth1/auth1?method=getnew"_s << 404001;
        QTest::newRow("dots") << u"/api/v1/../../etc/passwd"_s << 404001;
        QTest::newRow("quoted") << u"/api/v1/auth1?method=getnew';DROP%20TABLE%20sessions--"_s << 404001;
        QTest::newRow("unicode") << u"/api/v1/%E7%94%A8%E6%88%B7?method=%F0%9F%98%80"_s << 404001;
        QTest::newRow("broken escapes") << u"/api/v1/auth1?method=%zz%"_s << 404001;
        QTest::newRow("long path") << u"/api/v1/"_s + QString(4000, u'a') << 404001;
        QTest::newRow("long token") << u"/api/v1/user?method=get&tokenid="_s + QString(4000, u'a') << 401001;
        QTest::newRow("quoted token") << u"/api/v1/user?method=get&tokenid='%20OR%201=1"_s << 401001;
        QTest::newRow("method in the body only") << u"/api/v1/auth1?x=1"_s << 404001;
    }
    void targets()
    {
        QFETCH(QString, target);
        static const ServerFixture fixture;
        QTEST(fixture.post(target, "{\"a\":1}&method=getconfig").code(), "code");
    }

    /// One member of an acceptable body is replaced by each kind of value that it must not have.
    void wrongTypes_data()
    {
        QTest::addColumn<QString>("service");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("member");
        QTest::addColumn<QJsonArray>("wrong");
        const QJsonArray notText{
            1, true, QJsonValue::Null, QJsonArray{1}, QJsonObject{{u"a"_s, 1}}, QString(100'000, u'x')};
        const QJsonArray notObject{1, true, QJsonValue::Null, QJsonArray{1}, u"x"_s};
        const QJsonArray notNumber{true, QJsonValue::Null, QJsonArray{}, u"x"_s, u"nan"_s, -1, 1.5, 1e300};
        const auto row = [](const char *service, const char *method, const char *member, const QJsonArray &wrong) {
            QTest::addRow("%s.%s %s", service, method, member)
                << QString::fromLatin1(service) << QString::fromLatin1(method) << QString::fromLatin1(member) << wrong;
        };
        row("auth1", "getnew", "account", notText);
        row("auth1", "getnew", "password", notText);
        row("auth1", "getnew", "deviceinfo", notObject);
        row("auth1", "getnew", "vcodeinfo", notObject);
        row("auth1", "getnew", "dualfactorauthinfo", notObject);
        row("auth1", "getbythirdparty", "thirdpartyid", notText);
        row("auth1", "getbythirdparty", "params", notObject);
        row("auth1", "refreshtoken", "tokenid", notText);
        row("auth1", "refreshtoken", "userid", notText);
        row("auth1", "refreshtoken", "expirestype", notNumber);
        row("auth1", "logout", "ostype", notNumber);
        row("auth1", "sendauthvcode", "account", notText);
        row("auth1", "sendauthvcode", "password", notText);
        row("auth1", "sendauthvcode", "oldtelnum", notText);
        row("auth1", "getvcode", "uuid", notText);
        row("auth1", "modifypassword", "account", notText);
        row("auth1", "modifypassword", "oldpwd", notText);
        row("auth1", "modifypassword", "newpwd", notText);
        row("config", "getoemconfigbysection", "section", notText);
        row("config", "get", "ostype", notNumber);
        row("config", "setquickstartstatus", "ostype", notNumber);
        row("redirect", "gethostinfo", "https", QJsonArray{u"x"_s, 2, QJsonArray{}});
        row("redirect", "gethostinfo", "port", notNumber);
        row("update", "check", "platform", notText);
        row("update", "check", "version", notText);
        row("update", "download", "osType", notNumber);
        row("update", "download", "reqhost", notText);
        row("update", "download", "usehttps", QJsonArray{u"x"_s, 2, QJsonArray{}});
    }
    void wrongTypes()
    {
        QFETCH(QString, service);
        QFETCH(QString, method);
        QFETCH(QString, member);
        QFETCH(QJsonArray, wrong);
        static const ServerFixture fixture;
        static const QString token = fixture.signInToken();
        const QJsonObject good{{u"account"_s, u"nobody"_s},
                               {u"password"_s, u"x"_s},
                               {u"thirdpartyid"_s, u"x"_s},
                               {u"tokenid"_s, token},
                               {u"userid"_s, u"x"_s},
                               {u"expirestype"_s, 2},
                               {u"oldpwd"_s, u"x"_s},
                               {u"newpwd"_s, u"x"_s},
                               {u"section"_s, u"quillbox"_s},
                               {u"ostype"_s, 5},
                               {u"https"_s, 1},
                               {u"port"_s, 1},
                               {u"platform"_s, u"mac"_s},
                               {u"version"_s, u"1"_s},
                               {u"osType"_s, 3},
                               {u"reqhost"_s, u"h"_s},
                               {u"usehttps"_s, false}};
        for (const QJsonValue &value : wrong) {
            QJsonObject body = good;
            body.insert(member, value);
            QCOMPARE(fixture.call(service, method, body, token).code(), 400002);
        }
    }

    void rawBytes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("hangUp");
        const QByteArray start = "POST /api/v1/ping HTTP/1.1\r\nHost: h\r\n";
        QTest::newRow("nothing") << QByteArray() << true;
        QTest::newRow("garbage") << QByteArray("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11) << true;
        QTest::newRow("half a header") << start << true;
        QTest::newRow("half a body") << start + "Content-Length: 1000\r\n\r\n{" << true;
        QTest::newRow("length is no number") << start + "Content-Length: x\r\n\r\n" << false;
        QTest::newRow("endless length") << start + "Content-Length: 99999999999999999999\r\n\r\n{}" << true;
        QTest::newRow("no length") << start + "\r\n{}" << false;
        QTest::newRow("broken chunks") << start + "Transfer-Encoding: chunked\r\n\r\nzz\r\n" << false;
        QTest::newRow("other verb") << QByteArray("DELETE /api/v1/ping HTTP/1.1\r\nHost: h\r\n\r\n") << false;
        QTest::newRow("ranges") << "GET /x HTTP/1.1\r\nRange: bytes=" + QByteArray("0-1,").repeated(1500) + "\r\n\r\n"
                                << false;
        QTest::newRow("long line") << "POST /" + QByteArray(100'000, 'a') + " HTTP/1.1\r\n\r\n" << false;
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
                good += fixture.post(target, {}, https).json.value("account"_L1).toString() == demoName() ? 1 : 0;
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
