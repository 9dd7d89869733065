#include "SocketRecorders.h"
#include "channel/SocketMessage.h"
#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QTest>

#include <future>
#include <stdexcept>
#include <unistd.h>

using namespace GDUnixSocketErrors;
using testing::ListeningServer;
using namespace Qt::StringLiterals;

class TestUnixSocketServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void conversation()
    {
        ListeningServer end;
        QVERIFY2(end.listening, qPrintable(end.error.localizedDescription()));
        QCOMPARE(int(end.server->state()), 3);
        QCOMPARE(testing::modeOf(end.path()), 0600u);
        const auto listener = std::make_shared<testing::ClientRecorder>();
        const auto client = GDUnixSocketClient::initWithSocketPath(end.path());
        client->setDelegate(listener);
        std::promise<QBError> connected;
        client->connectWithAutoRead(true, [&](const QBError &error) { connected.set_value(error); });
        QVERIFY(!connected.get_future().get());
        QCOMPARE(int(client->state()), 1);

        QVERIFY(end.recorder->waitForEvent(u"accepted"_s));
        client->writeData(SocketMessage{SocketMessage::appEvent(), u"x"_s}.bytes(), GDUnixSocket::WriteCompletion());
        QVERIFY(end.recorder->waitForEvent(u"data"_s));
        QVERIFY(SocketMessage::parse(end.recorder->bytes()));
        QCOMPARE(end.server->sendData("answer", end.recorder->lastID()), 6);
        QVERIFY(listener->waitForBytes(6));

        QVERIFY(client->closeWithError(nullptr));
        QVERIFY(end.recorder->waitForEvent(u"disconnected"_s));
        const QStringList expected = {u"listening"_s, u"accepted"_s, u"data"_s, u"disconnected"_s};
        QCOMPARE(end.recorder->events(), expected);
        QCOMPARE(listener->events(), QStringList{u"data"_s});
    }

    void fragments()
    {
        const std::tuple<std::size_t, int, QList<int>> cases[] = {
            {256, 300, {256, 44}}, {256, 256, {256}}, {100, 250, {100, 100, 50}}, {0, 300, {256, 44}}};
        for (const auto &[fragmentSize, length, pieces] : cases) {
            ListeningServer end(fragmentSize); // 0: not given
            QCOMPARE(end.connected()->writeData(QByteArray(length, 'x')), length);
            QVERIFY(end.recorder->waitForBytes(length));
            QCOMPARE(end.recorder->pieceSizes(), pieces);
        }
    }

    void burst()
    {
        for (const auto &[count, length] : {std::pair(10'000, 20), std::pair(1, 1'000'000)}) {
            ListeningServer end;
            const auto client = end.connected();
            SocketMessage message = {SocketMessage::statusBarSearching(), QString(length, u'x')};
            qsizetype sent = 0;
            for (int i = 0; i < count; ++i) {
                message.text.replace(0, 6, u"%1"_s.arg(i, 6));
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
    }

    void garbageAndHalfMessages()
    {
        ListeningServer end;
        const QByteArray bytes = QByteArray(5'000, '\0') + "{\"AppEvent\": \"half";
        end.connected()->writeData(bytes); // and gone
        QVERIFY(end.recorder->waitForEvent(u"disconnected"_s));
        QCOMPARE(end.recorder->bytes(), bytes);
        end.connected()->writeData("next");
        QVERIFY(end.recorder->waitForBytes(bytes.size() + 4));
    }

    void unknownClient()
    {
        ListeningServer end;
        QBError error;
        QCOMPARE(end.server->sendData("x", u"NOBODY"_s, &error), -1);
        QCOMPARE(error.code(), -3015);
        QCOMPARE(error.localizedDescription(),
                 u"Unknown client. It is either disconnected or never existed. Client ID: NOBODY"_s);
        std::promise<std::pair<qint64, qint64>> sent;
        end.server->sendData("x", u"NOBODY"_s, [&](const QBError &failure, qint64 count) {
            sent.set_value({failure.code(), count});
        });
        const std::pair<qint64, qint64> expected = {-3015, -1};
        QCOMPARE(sent.get_future().get(), expected);
        error = gduds_errorForCode(Write);
        QCOMPARE(end.server->writeData("x", &error), 0);
        QVERIFY(!error);
    }

    void clientGoesAway()
    {
        ListeningServer end;
        auto client = end.connected();
        QVERIFY(end.recorder->waitForEvent(u"accepted"_s));
        const QString id = end.recorder->lastID();
        QCOMPARE(end.server->sendData("unread", id), 6);
        client.reset(); // closing with unread bytes breaks the connection
        QVERIFY(end.recorder->waitForEvent(u"failed -3017"_s));
        QVERIFY(QTest::qWaitFor([&] { return !end.server->clientIDExists(id); }));
        QCOMPARE(end.server->sendData("x", id), -1);
    }

    void staleFileHealsAtSecondAttempt()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"socket"_s);
        const auto address = SystemSocket::address(path);
        const platform::FileDescriptor dead = SystemSocket::open();
        const auto *const record = reinterpret_cast<const sockaddr *>(&*address);
        QCOMPARE(::bind(dead.get(), record, SystemSocket::addressLength), 0);
        const auto server = GDUnixSocketServer::initWithSocketPath(path);
        QBError error;
        QVERIFY(!server->listenWithError(&error));
        QCOMPARE(error.code(), -3023);
        QVERIFY2(error.localizedDescription().endsWith(u"errno: 98. Address already in use"_s),
                 qPrintable(error.localizedDescription()));
        QCOMPARE(int(server->state()), 2);
        QVERIFY(!QFileInfo::exists(path));
        QVERIFY(server->listenWithError(&error));
        QVERIFY(GDUnixSocketClient::initWithSocketPath(path)->connectWithAutoRead(false));
    }

    void plainFileIsNeverRemoved()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"socket"_s);
        QVERIFY(testing::writeFile(path, "mine"));
        const auto server = GDUnixSocketServer::initWithSocketPath(path);
        for (int attempt = 0; attempt < 2; ++attempt)
            QVERIFY(!server->listenWithError());
        QCOMPARE(testing::contentOf(path), "mine"_ba);
    }

    void bindFailure()
    {
        QTemporaryDir home;
        const QString open = u"Failed to bind socket. The folder of the socket is open to other users"_s;
        const std::tuple<QString, mode_t, QString> cases[] = {
            {u"missing"_s, 0, u"No such file or directory"_s}, {u"others"_s, 0755, open}, {u"group"_s, 0710, open}};
        for (const auto &[name, mode, reason] : cases) {
            const QByteArray folder = QFile::encodeName(home.filePath(name));
            if (mode != 0)
                QVERIFY(::mkdir(folder.constData(), 0700) == 0 && ::chmod(folder.constData(), mode) == 0);
            const auto recorder = std::make_shared<testing::ServerRecorder>();
            const auto server = GDUnixSocketServer::initWithSocketPath(home.filePath(name + "/socket"_L1));
            server->setDelegate(recorder);
            QBError error;
            QVERIFY(!server->listenWithError(&error));
            QCOMPARE(error.code(), -3023);
            QVERIFY2(error.localizedDescription().endsWith(reason), qPrintable(error.localizedDescription()));
            QCOMPARE(server->fd(), -1);
            QVERIFY(recorder->events().isEmpty());
        }
    }

    void inconsistentPath()
    {
        const QString path = u"/tmp/a"_s + QChar(u'\0') + u"b"_s;
        const QString expected = u"Failed to listen on socket. The socket path is inconsistent"_s;
        QBError error;
        const auto server = GDUnixSocketServer::initWithSocketPath(path);
        QVERIFY(!server->listenWithError(&error));
        QCOMPARE(error.code(), -3022);
        QCOMPARE(error.localizedDescription(), expected);
        const auto client = GDUnixSocketClient::initWithSocketPath(path);
        QVERIFY(!client->connectWithAutoRead(true, &error));
        QCOMPARE(error.localizedDescription(), expected);
        QCOMPARE(client->fd(), -1);
        QVERIFY2(!SystemSocket::address(u"/"_s + QString(103, u'a')), "104 bytes are cut");
        QVERIFY(SystemSocket::address(u"/"_s + QString(102, u'a')));
    }

    void connectFailure()
    {
        QTemporaryDir folder;
        const auto client = GDUnixSocketClient::initWithSocketPath(folder.filePath(u"nobody"_s));
        QBError error;
        QVERIFY(!client->connectWithAutoRead(true, &error));
        QCOMPARE(error.code(), -3019);
        QVERIFY2(error.localizedDescription().endsWith(u"errno: 2. No such file or directory"_s),
                 qPrintable(error.localizedDescription()));
        QCOMPARE(client->fd(), -1);
        QVERIFY(client->closeWithError(nullptr));
    }

    void otherUsersAreRefused()
    {
        const testing::LogRecorder log;
        QTemporaryDir folder;
        const QString path = folder.filePath(u"socket"_s);
        const auto recorder = std::make_shared<testing::ServerRecorder>();
        const auto server = GDUnixSocketServer::initWithSocketPath(path, 256, ::geteuid() + 1);
        server->setDelegate(recorder);
        QVERIFY(server->listenWithError());
        for (int attempt = 0; attempt < 3; ++attempt) {
            const auto client = GDUnixSocketClient::initWithSocketPath(path);
            QVERIFY(client->connectWithAutoRead(false));
            QVERIFY(!client->readWithError()); // turned away
        }
        QCOMPARE(recorder->events(), QStringList{u"listening"_s});
        QVERIFY(log.contains(u"another user"_s));
    }

    void tableIsBounded()
    {
        ListeningServer end;
        QList<std::shared_ptr<GDUnixSocketClient>> clients;
        for (int i = 0; i < GDUnixSocketServer::maximumClients; ++i)
            clients.append(end.connected());
        const auto surplus = end.connected();
        QVERIFY(!surplus->readWithError());
        QCOMPARE(end.recorder->events().count(u"accepted"_s), GDUnixSocketServer::maximumClients);
        const QString last = end.recorder->lastID();
        clients.removeLast();
        QVERIFY(QTest::qWaitFor([&] { return !end.server->clientIDExists(last); }));
        const auto next = end.connected();
        next->writeData("x");
        QVERIFY(end.recorder->waitForBytes(1));
    }

    void table()
    {
        const auto server = GDUnixSocketServer::initWithSocketPath(u"/tmp/table"_s);
        const auto client = GDUnixSocket::initWithSocketPath(u"(dummy)"_s);
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
};

REGISTER_TEST(TestUnixSocketServer)
#include "TestUnixSocketServer.moc"
