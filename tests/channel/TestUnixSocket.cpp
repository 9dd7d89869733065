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
    void paths_data();
    void paths();
    void errorTexts_data();
    void errorTexts();
    void neverOpened();
    void readsPiecesThenTheEnd();
    void writing();
    void closing();
    void closingFails();
    void identifierIsMadeOnce();
    void completions();
};

void TestUnixSocket::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("null") << QString() << false;
    QTest::newRow("empty") << QStringLiteral("") << false;
    QTest::newRow("dummy") << QStringLiteral("(dummy)") << true;
    QTest::newRow("plain") << QStringLiteral("/tmp/socket") << true;
    QTest::newRow("relative") << QStringLiteral("run/socket") << true;
    QTest::newRow("bare name") << QStringLiteral("socket") << false;
    QTest::newRow("dot") << QStringLiteral("/tmp/./socket") << false;
    QTest::newRow("leading dot") << QStringLiteral("./socket") << false;
    QTest::newRow("dot dot") << QStringLiteral("/tmp/../socket") << false;
    QTest::newRow("slash at the end") << QStringLiteral("/tmp/socket/") << false;
    QTest::newRow("two slashes") << QStringLiteral("/tmp//socket") << false;
    QTest::newRow("home sign") << QStringLiteral("~/socket") << false;
    QTest::newRow("103 bytes") << QStringLiteral("/") + QString(102, u'a') << true;
    QTest::newRow("104 bytes") << QStringLiteral("/") + QString(103, u'a') << false;
    QTest::newRow("104 bytes in few characters") << QStringLiteral("/a") + QString(34, u'文') << false;
}

void TestUnixSocket::paths()
{
    QFETCH(const QString, path);
    QFETCH(const bool, accepted);
    QCOMPARE(GDUnixSocket::initWithSocketPath(path) != nullptr, accepted);
    QCOMPARE(GDUnixSocketClient::initWithSocketPath(path) != nullptr, accepted);
    QCOMPARE(GDUnixSocketServer::initWithSocketPath(path) != nullptr, accepted);
    QVERIFY(!GDUnixSocket::init());
}

void TestUnixSocket::errorTexts_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    const auto row = [](int code, const char *text) { QTest::addRow("%d", code) << code << QString::fromLatin1(text); };
    row(-3024, "Bad socket");
    row(-3023, "Failed to bind socket");
    row(-3022, "Failed to listen on socket");
    row(-3021, "Failed to accept connection, closing socket");
    row(-3020, "Failed to unlink socket");
    row(-3019, "Failed to connect to socket");
    row(-3018, "Failed to write to socket");
    row(-3017, "Failed to read from socket");
    row(-3016, "Failed to close socket");
    row(-3015, "Unknown client. It is either disconnected or never existed");
    row(-3014, "Unknown Error");
}

void TestUnixSocket::errorTexts()
{
    QFETCH(const int, code);
    QFETCH(const QString, text);
    const QBError plain = gduds_errorForCode(code);
    QCOMPARE(plain.domain(), QStringLiteral("com.ferrolan.GDUnixSocket"));
    QCOMPARE(plain.code(), code);
    QCOMPARE(plain.localizedDescription(), text);
    QCOMPARE(gduds_errorForCode(code, QStringLiteral("More")).localizedDescription(), text + QStringLiteral(". More"));
}

void TestUnixSocket::neverOpened()
{
    const auto socket = GDUnixSocket::initWithSocketPath(QStringLiteral("/tmp/socket"));
    QCOMPARE(socket->fd(), -1);
    QCOMPARE(int(socket->state()), 0);
    QCOMPARE(socket->fragmentSize(), std::size_t(256));
    QCOMPARE(socket->checkForBadSocket().code(), BadSocket);
    QBError error;
    QVERIFY(!socket->readWithError(&error));
    QCOMPARE(error.localizedDescription(),
             QStringLiteral("Failed to read from socket. fd: -1. errno: 9. Bad file descriptor"));
    QCOMPARE(socket->writeData("x", &error), -1);
    QCOMPARE(error.code(), BadSocket);
    QCOMPARE(socket->writeData("", &error), 0);
    QVERIFY(!error);
    QVERIFY(!socket->closeWithError(&error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("Failed to close socket. Bad socket"));
}

void TestUnixSocket::readsPiecesThenTheEnd()
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

void TestUnixSocket::writing()
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
    const QString expected = QStringLiteral("Failed to write to socket. fd: %1. errno: 32. Broken pipe");
    QCOMPARE(error.localizedDescription(), expected.arg(pair.ours->fd()));
}

void TestUnixSocket::closing()
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

void TestUnixSocket::closingFails()
{
    Pair pair;
    const int number = pair.ours->fd();
    ::close(number);
    QBError error;
    QVERIFY(!pair.ours->closeWithError(&error));
    const QString expected = QStringLiteral("Failed to close socket. fd: %1. errno: 9. Bad file descriptor");
    QCOMPARE(error.localizedDescription(), expected.arg(number));
    QCOMPARE(pair.ours->fd(), -1);
    QCOMPARE(int(pair.ours->state()), 1);
}

void TestUnixSocket::identifierIsMadeOnce()
{
    const auto socket = GDUnixSocket::initWithSocketPath(QStringLiteral("(dummy)"));
    QString seen[4];
    {
        std::vector<std::jthread> threads;
        for (QString &id : seen)
            threads.emplace_back([&] { id = socket->uniqueID(); });
    }
    for (const QString &id : seen)
        QCOMPARE(id, seen[0]);
    static const QRegularExpression form(QStringLiteral("^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"));
    QVERIFY2(form.match(seen[0]).hasMatch(), qPrintable(seen[0]));
    QVERIFY(GDUnixSocket::initWithSocketPath(QStringLiteral("(dummy)"))->uniqueID() != seen[0]);
}

void TestUnixSocket::completions()
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

REGISTER_TEST(TestUnixSocket)
#include "TestUnixSocket.moc"
