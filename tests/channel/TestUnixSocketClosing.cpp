#include "SocketRecorders.h"
#include "support/LogRecorder.h"
#include "support/NoOverride.h"
#include "support/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <fcntl.h>
#include <future>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using testing::ListeningServer;
using namespace Qt::StringLiterals;

namespace
{

qsizetype openDescriptors()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
}

/// While it lives, the process can open nothing.
class NoFreeDescriptor
{
public:
    NoFreeDescriptor()
    {
        ::getrlimit(RLIMIT_NOFILE, &before);
        const rlimit few = {128, before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
        for (int filler = ::dup(0); filler >= 0; filler = ::dup(0))
            fillers.push_back(platform::FileDescriptor(filler));
    }
    ~NoFreeDescriptor() { ::setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before = {};
    std::vector<platform::FileDescriptor> fillers;
};

const QByteArray moreThanFits(4'000'000, 'x');

/// Connects anew as soon as it hears that reading has failed.
class Reconnecting : public testing::ClientRecorder
{
public:
    void didFailToReadWithError(GDUnixSocketClient &client, const QBError &error) override
    {
        const bool connected = client.connectWithAutoRead(true);
        add(u"%1, %2"_s.arg(error.code()).arg(connected));
    }
};

} // namespace

class TestUnixSocketClosing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Whether the close comes before, in or after the read is the system's choice: in every case the read ends.
    void whileReading()
    {
        const ListeningServer end;
        for (int round = 0; round < 100; ++round) {
            const auto client = end.connected();
            auto reading = std::async(std::launch::async, [client] { return client->readWithError().has_value(); });
            if (round % 4 == 0)
                std::this_thread::sleep_for(1ms);
            QVERIFY(client->closeWithError(nullptr));
            QCOMPARE(reading.wait_for(10s), std::future_status::ready);
            QVERIFY(!reading.get());
        }
    }

    void whileAccepting()
    {
        for (int round = 0; round < 50; ++round) {
            ListeningServer end;
            QVERIFY(end.listening);
            if (round % 2 == 0)
                QVERIFY(end.connected()->fd() >= 0);
            QBError error;
            QVERIFY(end.server->closeWithError(&error));
            QVERIFY(end.server->closeWithError(&error));
            QCOMPARE(int(end.server->state()), 2);
            QVERIFY(!QFileInfo::exists(end.path()));
            QCOMPARE(end.recorder->events().count(u"closed 0"_s), 1);
            const std::weak_ptr<GDUnixSocketServer> server = end.server;
            end.server.reset();
            QVERIFY(QTest::qWaitFor([&] { return server.expired(); }));
            QCOMPARE(end.recorder->events().filter(u"Failed"_s), QStringList());
        }
    }

    void clientThatNeverReads()
    {
        ListeningServer end;
        const auto lazy = end.connected();
        QVERIFY(end.recorder->waitForEvent(u"accepted"_s));
        const QString lazyID = end.recorder->lastID();
        std::promise<qint64> written;
        auto count = written.get_future();
        end.server->sendData(moreThanFits, lazyID, [&](const QBError &, qint64 sent) { written.set_value(sent); });

        const auto eager = end.connected();
        QVERIFY(end.recorder->waitFor([](const testing::Events &self) { return self.list.count(u"accepted"_s) == 2; }));
        QCOMPARE(end.server->sendData("hello", end.recorder->lastID()), 5);
        QCOMPARE(*eager->readWithError(), QByteArray("hello"));
        QCOMPARE(count.wait_for(0s), std::future_status::timeout);

        end.server->closeSilently();
        QCOMPARE(count.wait_for(10s), std::future_status::ready);
        QVERIFY(count.get() < moreThanFits.size());
        QVERIFY(!end.recorder->events().contains(u"closed 0"_s));
    }

    void destructionEndsEverything()
    {
        const qsizetype before = openDescriptors();
        std::promise<void> read, written;
        std::weak_ptr<GDUnixSocketServer> server;
        std::weak_ptr<GDUnixSocketClient> reader, writer;
        {
            ListeningServer end;
            auto readingClient = end.connected(true);
            auto writingClient = end.connected();
            readingClient->readWithCompletion(
                [&](const QBError &, const std::optional<QByteArray> &) { read.set_value(); });
            // Nobody at the other end of this one reads: the server's own threads do not touch it.
            const auto silent = GDUnixSocketServer::initWithSocketPath(end.folder.filePath(u"silent"_s));
            QVERIFY(silent->listenWithError());
            const auto deaf = std::make_shared<testing::ServerRecorder>();
            silent->setDelegate(deaf);
            writingClient = GDUnixSocketClient::initWithSocketPath(silent->socketPath());
            QVERIFY(writingClient->connectWithAutoRead(false));
            QVERIFY(deaf->waitForEvent(u"accepted"_s));
            silent->sendData(moreThanFits, deaf->lastID(), [&](const QBError &, qint64) { written.set_value(); });
            server = std::exchange(end.server, nullptr);
            reader = readingClient;
            writer = writingClient;
        }
        QCOMPARE(read.get_future().wait_for(10s), std::future_status::ready);
        QCOMPARE(written.get_future().wait_for(10s), std::future_status::ready);
        QVERIFY(QTest::qWaitFor([&] { return server.expired() && reader.expired() && writer.expired(); }));
        // Threads of earlier tests may have held some when they were counted.
        QVERIFY2(QTest::qWaitFor([&] { return openDescriptors() <= before; }), "a descriptor leaked");
    }

    void acceptFails()
    {
        ListeningServer end;
        const platform::FileDescriptor caller = SystemSocket::open();
        const auto address = SystemSocket::address(end.path());
        {
            const NoFreeDescriptor full;
            QVERIFY(SystemSocket::connect(caller.get(), *address));
            QVERIFY(end.recorder->waitForEvent(u"closed 0"_s));
        }
        QStringList events = end.recorder->events();
        events.removeAll(u"accepted"_s); // a call that waits already may have its descriptor reserved
        QCOMPARE(events.size(), 3);
        QVERIFY2(events.at(1).startsWith(u"Failed to accept connection, closing socket. fd: "_s),
                 qPrintable(events.at(1)));
        QVERIFY2(events.at(1).endsWith(u"errno: 24. Too many open files"_s), qPrintable(events.at(1)));
        QVERIFY(QTest::qWaitFor([&] { return end.server->fd() == -1; }));
    }

    void unlinkFails()
    {
        ListeningServer end;
        const auto client = end.connected();
        QVERIFY(end.recorder->waitForEvent(u"accepted"_s));
        const QByteArray folder = QFile::encodeName(end.folder.path());
        QCOMPARE(::chmod(folder.constData(), 0500), 0);
        {
            const testing::NoOverride permissionsCount;
            QBError error;
            QVERIFY(!end.server->closeWithError(&error));
            QCOMPARE(error.code(), -3020);
            QVERIFY2(error.localizedDescription().startsWith(u"Failed to unlink socket. fd: "_s),
                     qPrintable(error.localizedDescription()));
        }
        QVERIFY(!client->readWithError());
        QVERIFY(end.recorder->events().contains(u"closed -3020"_s));
        QCOMPARE(int(end.server->state()), 3);
        const auto next = end.connected(); // it goes on listening
        next->writeData("x");
        QVERIFY(end.recorder->waitForBytes(1));
        QCOMPARE(::chmod(folder.constData(), 0700), 0);
        QVERIFY(end.server->closeWithError(nullptr));
    }

    void connectingAgain()
    {
        ListeningServer end;
        const auto client = GDUnixSocketClient::initWithSocketPath(end.path());
        for (int round = 1; round <= 20; ++round) {
            QVERIFY(client->connectWithAutoRead(true));
            QCOMPARE(client->writeData("x"), 1);
            QVERIFY(end.recorder->waitForBytes(round));
            if (round % 2 == 0)
                client->close();
            QCOMPARE(int(client->state()), round % 2 == 0 ? 2 : 1);
        }
    }

    void reconnectingWhenReadingFails()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"socket"_s);
        const auto address = SystemSocket::address(path);
        const platform::FileDescriptor listening = SystemSocket::open();
        const auto *const record = reinterpret_cast<const sockaddr *>(&*address);
        QCOMPARE(::bind(listening.get(), record, SystemSocket::addressLength), 0);
        QCOMPARE(::listen(listening.get(), 5), 0);
        const auto recorder = std::make_shared<Reconnecting>();
        const auto client = GDUnixSocketClient::initWithSocketPath(path);
        client->setDelegate(recorder);
        QVERIFY(client->connectWithAutoRead(true));
        const int lost = client->fd();
        platform::FileDescriptor peer = SystemSocket::accept(listening.get());
        QCOMPARE(client->writeData("unread"), 6);
        peer.close(); // with something unread, which the other end sees as a failure and not as the end of the stream
        QVERIFY(recorder->waitForEvent(u"-3017, 1"_s));

        QTRY_VERIFY(::fcntl(lost, F_GETFD) < 0); // the loop of the lost connection has ended
        QCOMPARE(int(client->state()), 1);
        peer = SystemSocket::accept(listening.get());
        QCOMPARE(SystemSocket::send(peer.get(), "y", 1), 1);
        QVERIFY(recorder->waitForBytes(1));
    }

    void manyClientsComeAndGo()
    {
        ListeningServer end;
        const auto visit = [&] {
            for (int i = 0; i < 50; ++i) {
                const auto client = end.connected(i % 2 == 0);
                client->writeData("x", GDUnixSocket::WriteCompletion());
                client->uniqueID();
                end.server->sendData("y", end.recorder->lastID());
                client->writeData("x");
            }
        };
        {
            std::vector<std::jthread> visitors;
            for (int i = 0; i < 4; ++i)
                visitors.emplace_back(visit);
        }
        QVERIFY(end.recorder->waitForBytes(200));
        QVERIFY(end.server->closeWithError(nullptr));
        QVERIFY(!end.server->clientIDExists(end.recorder->lastID()));
    }
};

REGISTER_TEST(TestUnixSocketClosing)
#include "TestUnixSocketClosing.moc"
