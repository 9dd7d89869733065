#include "channel/GDUnixSocket.h"
#include "channel/GDUnixSocketClient.h"
#include "channel/GDUnixSocketServer.h"
#include "support/TestMain.h"

#include <QRegularExpression>
#include <QTest>

#include <cerrno>
#include <future>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace GDUnixSocketErrors;
using namespace Qt::StringLiterals;

namespace
{

struct Pair {
    Pair()
    {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            qFatal("no socket pair");
        ours = GDUnixSocket::initWithDescriptor(platform::FileDescriptor(ends[0]), 256);
        theirs = platform::FileDescriptor(ends[1]);
    }
    std::shared_ptr<GDUnixSocket> ours;
    platform::FileDescriptor theirs;
};

} // namespace

class TestUnixSocket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paths()
    {
        const QString longest = u'/' + QString(102, u'a');
        for (const QString &path : {u"(dummy)"_s, u"/tmp/socket"_s, u"run/socket"_s, longest})
            QVERIFY2(accepted(path) == 3, qPrintable(path));
        for (const QString &path :
             {QString(), u""_s, u"socket"_s, u"/tmp/./socket"_s, u"./socket"_s, u"/tmp/../socket"_s, u"/tmp/socket/"_s,
              u"/tmp//socket"_s, u"~/socket"_s, longest + u'a', u"/a"_s + QString(34, u'文')})
            QVERIFY2(accepted(path) == 0, qPrintable(path));
        QVERIFY(!GDUnixSocket::init());
    }

    void errorTexts()
    {
        const QStringList texts{u"Unknown Error"_s,
                                u"Unknown client. It is either disconnected or never existed"_s,
                                u"Failed to close socket"_s,
                                u"Failed to read from socket"_s,
                                u"Failed to write to socket"_s,
                                u"Failed to connect to socket"_s,
                                u"Failed to unlink socket"_s,
                                u"Failed to accept connection, closing socket"_s,
                                u"Failed to listen on socket"_s,
                                u"Failed to bind socket"_s,
                                u"Bad socket"_s};
        for (int i = 0; i < texts.size(); ++i) {
            const QBError plain = gduds_errorForCode(-3014 - i);
            QCOMPARE(plain.domain(), u"com.ferrolan.GDUnixSocket"_s);
            QCOMPARE(plain.code(), -3014 - i);
            QCOMPARE(plain.localizedDescription(), texts.at(i));
            QCOMPARE(gduds_errorForCode(-3014 - i, u"More"_s).localizedDescription(), texts.at(i) + ". More"_L1);
        }
    }

    void neverOpened()
    {
        const auto socket = GDUnixSocket::initWithSocketPath(u"/tmp/socket"_s);
        QCOMPARE(socket->fd(), -1);
        QCOMPARE(int(socket->state()), 0);
        QCOMPARE(socket->fragmentSize(), std::size_t(256));
        QCOMPARE(socket->checkForBadSocket().code(), BadSocket);
        QBError error;
        QVERIFY(!socket->readWithError(&error));
        QCOMPARE(error.localizedDescription(), u"Failed to read from socket. fd: -1. errno: 9. Bad file descriptor"_s);
        QCOMPARE(socket->writeData("x", &error), -1);
        QCOMPARE(error.code(), BadSocket);
        QCOMPARE(socket->writeData("", &error), 0);
        QVERIFY(!error);
        QVERIFY(!socket->closeWithError(&error));
        QCOMPARE(error.localizedDescription(), u"Failed to close socket. Bad socket"_s);
    }

    void readsPiecesThenTheEnd()
    {
        Pair pair;
        const QByteArray sent(300, 'x');
        QCOMPARE(::write(pair.theirs.get(), sent.constData(), 300), 300);
        pair.theirs.close();
        QBError error;
        QCOMPARE(pair.ours->readWithError(&error)->size(), 256);
        QCOMPARE(pair.ours->readWithError(&error)->size(), 44);
        error = gduds_errorForCode(Read);
        QVERIFY(!pair.ours->readWithError(&error));
        QVERIFY2(!error, "the end of the stream is no error");
    }

    void writing()
    {
        Pair pair;
        QBError error;
        QCOMPARE(pair.ours->writeData("hello", &error), 5);
        QVERIFY(!error);
        char buffer[16] = {};
        QCOMPARE(::read(pair.theirs.get(), buffer, sizeof buffer), 5);
        pair.theirs.close();
        QCOMPARE(pair.ours->writeData("hello", &error), -1); // and no signal
        QCOMPARE(error.code(), Write);
        const QString expected = u"Failed to write to socket. fd: %1. errno: 32. Broken pipe"_s;
        QCOMPARE(error.localizedDescription(), expected.arg(pair.ours->fd()));
    }

    void closing()
    {
        Pair pair;
        QCOMPARE(int(pair.ours->state()), 1);
        QBError error;
        QVERIFY(pair.ours->closeWithError(&error));
        QCOMPARE(int(pair.ours->state()), 2);
        QCOMPARE(pair.ours->fd(), -1);
        const platform::FileDescriptor newcomer(::dup(pair.theirs.get())); // most likely under the number given back
        QVERIFY(pair.ours->closeWithError(&error));
        QVERIFY(!error);
        char byte;
        QCOMPARE(::recv(newcomer.get(), &byte, 1, MSG_DONTWAIT), 0); // open, and at its end
        QCOMPARE(pair.ours->writeData("x", &error), -1);
        QCOMPARE(error.code(), BadSocket);
    }

    void closingFails()
    {
        Pair pair;
        const int number = pair.ours->fd();
        ::close(number);
        QBError error;
        QVERIFY(!pair.ours->closeWithError(&error));
        const QString expected = u"Failed to close socket. fd: %1. errno: 9. Bad file descriptor"_s;
        QCOMPARE(error.localizedDescription(), expected.arg(number));
        QCOMPARE(pair.ours->fd(), -1);
        QCOMPARE(int(pair.ours->state()), 1);
    }

    void identifierIsMadeOnce()
    {
        const auto socket = GDUnixSocket::initWithSocketPath(u"(dummy)"_s);
        QString seen[4];
        {
            std::vector<std::jthread> threads;
            for (QString &id : seen)
                threads.emplace_back([&] { id = socket->uniqueID(); });
        }
        for (const QString &id : seen)
            QCOMPARE(id, seen[0]);
        static const QRegularExpression form(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
        QVERIFY2(form.match(seen[0]).hasMatch(), qPrintable(seen[0]));
        QVERIFY(GDUnixSocket::initWithSocketPath(u"(dummy)"_s)->uniqueID() != seen[0]);
    }

    void completions()
    {
        Pair pair;
        const auto other = GDUnixSocket::initWithDescriptor(std::move(pair.theirs), 256);
        std::promise<QByteArray> read;
        std::promise<qint64> written;
        other->readWithCompletion([&](const QBError &error, const std::optional<QByteArray> &data) {
            read.set_value(error ? QByteArray() : *data);
        });
        pair.ours->writeData("hello", [&](const QBError &, qint64 count) { written.set_value(count); });
        QCOMPARE(written.get_future().get(), 5);
        QCOMPARE(read.get_future().get(), QByteArray("hello"));
        pair.ours->writeData("!", GDUnixSocket::WriteCompletion());
        QCOMPARE(*other->readWithError(), QByteArray("!"));
    }

private:
    /// How many of the three kinds of socket take the path.
    static int accepted(const QString &path)
    {
        return (GDUnixSocket::initWithSocketPath(path) ? 1 : 0) +
               (GDUnixSocketClient::initWithSocketPath(path) ? 1 : 0) +
               (GDUnixSocketServer::initWithSocketPath(path) ? 1 : 0);
    }
};

REGISTER_TEST(TestUnixSocket)
#include "TestUnixSocket.moc"
