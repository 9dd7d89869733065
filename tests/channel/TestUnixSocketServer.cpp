#include "SocketRecorders.h"
#include "channel/SocketMessage.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <future>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using namespace GDUnixSocketErrors;
using testing::ListeningServer;

class TestUnixSocketServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void conversation();
    void fragments_data();
    void fragments();
    void burst_data();
    void burst();
    void garbageAndHalfMessages();
    void unknownClient();
    void clientGoesAway();
    void staleFileHealsAtSecondAttempt();
    void plainFileIsNeverRemoved();
    void bindFailure_data();
    void bindFailure();
    void inconsistentPath();
    void connectFailure();
    void socketIsOwnerOnly();
    void otherUsersAreRefused();
    void tableIsBounded();
    void table();
};

void TestUnixSocketServer::conversation()
{
    ListeningServer end;
    QVERIFY2(end.listening, qPrintable(end.error.localizedDescription()));
    QCOMPARE(int(end.server->state()), 3);
    const auto listener = std::make_shared<testing::ClientRecorder>();
    const auto client = GDUnixSocketClient::initWithSocketPath(end.path());
    client->setDelegate(listener);
    std::promise<QBError> connected;
    client->connectWithAutoRead(true, [&](const QBError &error) { connected.set_value(error); });
    QVERIFY(!connected.get_future().get());
    QCOMPARE(int(client->state()), 1);

    QVERIFY(end.recorder->waitForEvent(QStringLiteral("accepted")));
    client->writeData(SocketMessage{SocketMessage::appEvent(), QStringLiteral("x")}.bytes(),
                      GDUnixSocket::WriteCompletion());
    QVERIFY(end.recorder->waitForEvent(QStringLiteral("data")));
    QVERIFY(SocketMessage::parse(end.recorder->bytes()));
    QCOMPARE(end.server->sendData("answer", end.recorder->lastID()), 6);
    QVERIFY(listener->waitForBytes(6));

    QVERIFY(client->closeWithError(nullptr));
    QVERIFY(end.recorder->waitForEvent(QStringLiteral("disconnected")));
    const QStringList expected = {QStringLiteral("listening"), QStringLiteral("accepted"), QStringLiteral("data"),
                                  QStringLiteral("disconnected")};
    QCOMPARE(end.recorder->events(), expected);
    QCOMPARE(listener->events(), QStringList{QStringLiteral("data")});
}

void TestUnixSocketServer::fragments_data()
{
    QTest::addColumn<int>("fragmentSize");
    QTest::addColumn<int>("length");
    QTest::addColumn<QList<int>>("pieces");
    QTest::newRow("300 at 256") << 256 << 300 << QList<int>{256, 44};
    QTest::newRow("exactly one") << 256 << 256 << QList<int>{256};
    QTest::newRow("own size") << 100 << 250 << QList<int>{100, 100, 50};
    QTest::newRow("size not given") << 0 << 300 << QList<int>{256, 44};
}

void TestUnixSocketServer::fragments()
{
    QFETCH(const int, fragmentSize);
    QFETCH(const int, length);
    ListeningServer end(static_cast<std::size_t>(fragmentSize));
    const auto client = end.connected();
    QCOMPARE(client->writeData(QByteArray(length, 'x')), length);
    QVERIFY(end.recorder->waitForBytes(length));
    QTEST(end.recorder->pieceSizes(), "pieces");
}

void TestUnixSocketServer::burst_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("length");
    QTest::newRow("10,000 messages") << 10'000 << 20;
    QTest::newRow("1 MB") << 1 << 1'000'000;
}

void TestUnixSocketServer::burst()
{
    QFETCH(const int, count);
    QFETCH(const int, length);
    ListeningServer end;
    const auto client = end.connected();
    SocketMessage message = {SocketMessage::statusBarSearching(), QString(length, u'x')};
    qsizetype sent = 0;
    for (int i = 0; i < count; ++i) {
        message.text.replace(0, 6, QStringLiteral("%1").arg(i, 6));
        sent += message.bytes().size();
        client->writeData(message.bytes(), GDUnixSocket::WriteCompletion());
    }
    QVERIFY(end.recorder->waitForBytes(sent));
    SocketMessageSplitter splitter;
    const QList<SocketMessage> found = splitter.feed(end.recorder->bytes());
    QCOMPARE(found.size(), count);
    for (int i = 0; i < count; ++i)
        QCOMPARE(found.at(i).text.left(6).toInt(), i);
    QCOMPARE(splitter.skipped(), 0);
}

void TestUnixSocketServer::garbageAndHalfMessages()
{
    ListeningServer end;
    const QByteArray bytes = QByteArray(5'000, '\0') + "{\"AppEvent\": \"half";
    end.connected()->writeData(bytes); // and gone
    QVERIFY(end.recorder->waitForEvent(QStringLiteral("disconnected")));
    QCOMPARE(end.recorder->bytes(), bytes);
    end.connected()->writeData("next");
    QVERIFY(end.recorder->waitForBytes(bytes.size() + 4));
}

void TestUnixSocketServer::unknownClient()
{
    ListeningServer end;
    QBError error;
    QCOMPARE(end.server->sendData("x", QStringLiteral("NOBODY"), &error), -1);
    QCOMPARE(error.code(), -3015);
    QCOMPARE(error.localizedDescription(),
             QStringLiteral("Unknown client. It is either disconnected or never existed. Client ID: NOBODY"));
    std::promise<std::pair<qint64, qint64>> sent;
    end.server->sendData("x", QStringLiteral("NOBODY"), [&](const QBError &failure, qint64 count) {
        sent.set_value({failure.code(), count});
    });
    const std::pair<qint64, qint64> expected = {-3015, -1};
    QCOMPARE(sent.get_future().get(), expected);
    error = gduds_errorForCode(Write);
    QCOMPARE(end.server->writeData("x", &error), 0);
    QVERIFY(!error);
}

void TestUnixSocketServer::clientGoesAway()
{
    ListeningServer end;
    auto client = end.connected();
    QVERIFY(end.recorder->waitForEvent(QStringLiteral("accepted")));
    const QString id = end.recorder->lastID();
    QCOMPARE(end.server->sendData("unread", id), 6);
    client.reset(); // closing with unread bytes breaks the connection
    QVERIFY(end.recorder->waitForEvent(QStringLiteral("failed -3017")));
    QVERIFY(QTest::qWaitFor([&] { return !end.server->clientIDExists(id); }));
    QCOMPARE(end.server->sendData("x", id), -1);
}

void TestUnixSocketServer::staleFileHealsAtSecondAttempt()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("socket"));
    const auto address = SystemSocket::address(path);
    const platform::FileDescriptor dead = SystemSocket::open();
    const auto *const record = reinterpret_cast<const sockaddr *>(&*address);
    QCOMPARE(::bind(dead.get(), record, SystemSocket::addressLength), 0);
    const auto server = GDUnixSocketServer::initWithSocketPath(path);
    QBError error;
    QVERIFY(!server->listenWithError(&error));
    QCOMPARE(error.code(), -3023);
    QVERIFY2(error.localizedDescription().endsWith(QStringLiteral("errno: 98. Address already in use")),
             qPrintable(error.localizedDescription()));
    QCOMPARE(int(server->state()), 2);
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(server->listenWithError(&error));
    QVERIFY(GDUnixSocketClient::initWithSocketPath(path)->connectWithAutoRead(false));
}

void TestUnixSocketServer::plainFileIsNeverRemoved()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("socket")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("mine") == 4);
    file.close();
    const auto server = GDUnixSocketServer::initWithSocketPath(file.fileName());
    for (int attempt = 0; attempt < 2; ++attempt)
        QVERIFY(!server->listenWithError());
    QCOMPARE(QFileInfo(file.fileName()).size(), 4);
}

void TestUnixSocketServer::bindFailure_data()
{
    QTest::addColumn<QString>("folderName");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("reason");
    const QString open = QStringLiteral("Failed to bind socket. The folder of the socket is open to other users");
    QTest::newRow("no folder") << QStringLiteral("missing") << -1 << QStringLiteral("No such file or directory");
    QTest::newRow("others may look in") << QStringLiteral("open") << 0755 << open;
    QTest::newRow("group may enter") << QStringLiteral("group") << 0710 << open;
}

void TestUnixSocketServer::bindFailure()
{
    QFETCH(const QString, folderName);
    QFETCH(const int, mode);
    QFETCH(const QString, reason);
    QTemporaryDir home;
    const QByteArray folder = QFile::encodeName(home.filePath(folderName));
    if (mode >= 0) {
        QCOMPARE(::mkdir(folder.constData(), 0700), 0);
        QCOMPARE(::chmod(folder.constData(), static_cast<mode_t>(mode)), 0);
    }
    const auto recorder = std::make_shared<testing::ServerRecorder>();
    const auto server = GDUnixSocketServer::initWithSocketPath(home.filePath(folderName + QStringLiteral("/socket")));
    server->setDelegate(recorder);
    QBError error;
    QVERIFY(!server->listenWithError(&error));
    QCOMPARE(error.code(), -3023);
    QVERIFY2(error.localizedDescription().endsWith(reason), qPrintable(error.localizedDescription()));
    QCOMPARE(server->fd(), -1);
    QVERIFY(recorder->events().isEmpty());
}

void TestUnixSocketServer::inconsistentPath()
{
    const QString path = QStringLiteral("/tmp/a") + QChar(u'\0') + QStringLiteral("b");
    const QString expected = QStringLiteral("Failed to listen on socket. The socket path is inconsistent");
    QBError error;
    const auto server = GDUnixSocketServer::initWithSocketPath(path);
    QVERIFY(!server->listenWithError(&error));
    QCOMPARE(error.code(), -3022);
    QCOMPARE(error.localizedDescription(), expected);
    const auto client = GDUnixSocketClient::initWithSocketPath(path);
    QVERIFY(!client->connectWithAutoRead(true, &error));
    QCOMPARE(error.localizedDescription(), expected);
    QCOMPARE(client->fd(), -1);
    QVERIFY2(!SystemSocket::address(QStringLiteral("/") + QString(103, u'a')), "104 bytes are cut");
    QVERIFY(SystemSocket::address(QStringLiteral("/") + QString(102, u'a')));
}

void TestUnixSocketServer::connectFailure()
{
    QTemporaryDir folder;
    const auto client = GDUnixSocketClient::initWithSocketPath(folder.filePath(QStringLiteral("nobody")));
    QBError error;
    QVERIFY(!client->connectWithAutoRead(true, &error));
    QCOMPARE(error.code(), -3019);
    QVERIFY2(error.localizedDescription().endsWith(QStringLiteral("errno: 2. No such file or directory")),
             qPrintable(error.localizedDescription()));
    QCOMPARE(client->fd(), -1);
    QVERIFY(client->closeWithError(nullptr));
}

void TestUnixSocketServer::socketIsOwnerOnly()
{
    const ListeningServer end;
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(end.path()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0600));
}

void TestUnixSocketServer::otherUsersAreRefused()
{
    const testing::LogRecorder log;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("socket"));
    const auto recorder = std::make_shared<testing::ServerRecorder>();
    const auto server = GDUnixSocketServer::initWithSocketPath(path, 256, ::geteuid() + 1);
    server->setDelegate(recorder);
    QVERIFY(server->listenWithError());
    for (int attempt = 0; attempt < 3; ++attempt) {
        const auto client = GDUnixSocketClient::initWithSocketPath(path);
        QVERIFY(client->connectWithAutoRead(false));
        QVERIFY(!client->readWithError()); // turned away
    }
    QCOMPARE(recorder->events(), QStringList{QStringLiteral("listening")});
    QVERIFY(log.contains(QStringLiteral("another user")));
}

void TestUnixSocketServer::tableIsBounded()
{
    ListeningServer end;
    QList<std::shared_ptr<GDUnixSocketClient>> clients;
    for (int i = 0; i < GDUnixSocketServer::maximumClients; ++i)
        clients.append(end.connected());
    const auto surplus = end.connected();
    QVERIFY(!surplus->readWithError());
    QCOMPARE(end.recorder->events().count(QStringLiteral("accepted")), GDUnixSocketServer::maximumClients);
    const QString last = end.recorder->lastID();
    clients.removeLast();
    QVERIFY(QTest::qWaitFor([&] { return !end.server->clientIDExists(last); }));
    const auto next = end.connected();
    next->writeData("x");
    QVERIFY(end.recorder->waitForBytes(1));
}

void TestUnixSocketServer::table()
{
    const auto server = GDUnixSocketServer::initWithSocketPath(QStringLiteral("/tmp/table"));
    const auto client = GDUnixSocket::initWithSocketPath(QStringLiteral("(dummy)"));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, server->addClient(nullptr));
    QVERIFY(!server->clientExists(client));
    QVERIFY(server->addClient(client));
    QVERIFY(server->clientExists(client) && server->clientIDExists(client->uniqueID()));
    server->removeAndCloseClient(client);
    QVERIFY(!server->clientExists(client));
    QVERIFY(server->addClient(client));
    server->removeAllClients();
    QVERIFY(!server->clientIDExists(client->uniqueID()));
}

REGISTER_TEST(TestUnixSocketServer)
#include "TestUnixSocketServer.moc"
