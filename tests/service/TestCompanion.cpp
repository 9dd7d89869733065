#include "channel/GDUnixSocketClient.h"
#include "channel/GDUnixSocketServer.h"
#include "channel/SocketMessage.h"
#include "files/QBPathIndicator.h"
#include "platform/Host.h"
#include "state/NotificationNames.h"
#include "state/QBGlobeInformation.h"
#include "support/Files.h"
#include "support/PrivateBus.h"
#include "support/TestMain.h"

#include <QProcess>
#include <QTest>

#include <csignal>
#include <memory>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
QString socketPath()
{
    return platform::host().folders.temporary() + u"/search_socket"_s;
}

void storeSession(const QString &token)
{
    const QString path = QBPathIndicator::pathForGlobeInformation();
    QDir().mkpath(QFileInfo(path).path());
    QBGlobeInformation session(path, false);
    session.setServer({u"127.0.0.1"_s, u"443"_s, true});
    session.setAccount({u"ann"_s, u"user-1"_s, token});
    QVERIFY(session.update());
}

/// One run of the companion; it is killed at the latest with this object.
class Companion
{
public:
    explicit Companion(const QStringList &arguments)
    {
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral(SERVICE_PROGRAM), arguments);
    }
    ~Companion()
    {
        process.kill();
        process.waitForFinished();
    }

    QString log()
    {
        output += QString::fromUtf8(process.readAll());
        return output;
    }
    bool says(const QString &text)
    {
        return QTest::qWaitFor([&] { return log().contains(text); }, 10'000);
    }
    bool ready() { return says(u"FUSEService: ready"_s); }
    /// Exit code, -1 when it did not end in time or crashed.
    int ended()
    {
        const bool over = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10'000);
        log();
        return over && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QProcess process;

private:
    QString output;
};

/// Something to take for the manager.
class Manager
{
public:
    Manager() { process.start(u"sleep"_s, {u"60"_s}); }
    ~Manager() { kill(); }
    QString id() { return process.waitForStarted() ? QString::number(process.processId()) : QString(); }
    void kill()
    {
        process.kill();
        process.waitForFinished();
    }

private:
    QProcess process;
};
} // namespace

class TestCompanion : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void refusesBadArguments_data();
    void refusesBadArguments();
    void refusesWithoutASession();
    void announcesItselfAndListens();
    void stops_data();
    void stops();
    void replacesAStaleSocketOnly();
    void leavesAForeignFileAlone();

private:
    std::unique_ptr<testing::PrivateBus> bus;
};

void TestCompanion::initTestCase()
{
    bus = std::make_unique<testing::PrivateBus>();
    QVERIFY(bus->isRunning());
}

void TestCompanion::init()
{
    QFile::remove(socketPath());
    storeSession(u"token-1"_s);
}

void TestCompanion::refusesBadArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::newRow("none") << QStringList() << 64;
    QTest::newRow("two") << QStringList{u"1000"_s, u"1000"_s} << 64;
    for (const QString &text : {u""_s, u"abc"_s, u"12x"_s, u"-5"_s, u"+5"_s, u" 7"_s, u"0"_s, u"1"_s, u"007"_s,
                                u"99999999999"_s, u"4294967297"_s, u"٣٣٣"_s})
        QTest::addRow("\"%s\"", qPrintable(text)) << QStringList{text} << 64;
    QTest::newRow("no such process") << QStringList{u"2147483647"_s} << 69;
}

void TestCompanion::refusesBadArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    Companion companion(arguments);
    QCOMPARE(companion.ended(), code);
    QVERIFY(companion.log().startsWith(u"FUSEService: "_s));
    QVERIFY(!QFile::exists(socketPath()));
}

void TestCompanion::refusesWithoutASession()
{
    Manager manager;
    const QString session = QBPathIndicator::pathForGlobeInformation();
    const auto refuses = [&] {
        Companion companion({manager.id()});
        return companion.ended() == 77 && companion.log().contains(u"nobody is signed in"_s);
    };
    storeSession(u""_s);
    QVERIFY(refuses());
    QVERIFY(writeFile(session, "garbage"));
    QVERIFY(refuses());
    QCOMPARE(contentOf(session), QByteArray("garbage")); // it only reads
    QVERIFY(QFile::remove(session));
    QVERIFY(refuses());
}

void TestCompanion::announcesItselfAndListens()
{
    Manager manager;
    QObject observer;
    int announced = 0;
    platform::host().distributed.addObserver(&observer, DistributedNotificationNames::registerServerSucess(),
                                             [&](const platform::Notification &) { ++announced; });
    Companion companion({manager.id()});
    QTRY_COMPARE(announced, 1);
    QVERIFY(companion.ready());
    const auto client = GDUnixSocketClient::initWithSocketPath(socketPath());
    QVERIFY(client && client->connectWithAutoRead(false));
    const SocketMessage message{SocketMessage::statusBarSearching(), u"a secret link"_s};
    client->writeData("garbage" + message.bytes() + message.bytes());
    QVERIFY(companion.says(u"received StatusBarSearching of 13 characters"_s));
    QTRY_COMPARE(companion.log().count(u"received StatusBarSearching"_s), 2);
    QVERIFY(!companion.log().contains(u"secret"_s));
    QVERIFY(!companion.log().contains(u"token-1"_s));
    QCOMPARE(modeOf(socketPath()) & 077, 0u);
}

void TestCompanion::stops_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"notification", "manager killed", "SIGTERM", "SIGINT"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void TestCompanion::stops()
{
    QFETCH(QString, how);
    Manager manager;
    Companion companion({manager.id()});
    QVERIFY(companion.ready());
    QVERIFY(QFile::exists(socketPath()));
    const pid_t processId = static_cast<pid_t>(companion.process.processId());
    if (how == u"notification"_s)
        platform::host().distributed.post(DistributedNotificationNames::stopQuillboxFuseService());
    else if (how == u"manager killed"_s)
        manager.kill();
    else
        ::kill(processId, how == u"SIGTERM"_s ? SIGTERM : SIGINT);
    QCOMPARE(companion.ended(), 0);
    QVERIFY(!QFile::exists(socketPath()));
}

void TestCompanion::replacesAStaleSocketOnly()
{
    Manager manager;
    {
        Companion killed({manager.id()});
        QVERIFY(killed.ready());
    }
    QVERIFY(QFile::exists(socketPath()));
    Companion first({manager.id()});
    QVERIFY(first.ready());
    Companion second({manager.id()});
    QCOMPARE(second.ended(), 73);
    QVERIFY(second.log().contains(u"another one serves"_s));
    const auto client = GDUnixSocketClient::initWithSocketPath(socketPath());
    QVERIFY(client->connectWithAutoRead(false));
}

void TestCompanion::leavesAForeignFileAlone()
{
    QVERIFY(writeFile(socketPath(), "mine"));
    Manager manager;
    Companion companion({manager.id()});
    QCOMPARE(companion.ended(), 73);
    QCOMPARE(contentOf(socketPath()), QByteArray("mine"));
}

REGISTER_TEST(TestCompanion)
#include "TestCompanion.moc"
