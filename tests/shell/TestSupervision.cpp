#include "ShellFixture.h"

#include "channel/GDUnixSocketServer.h"
#include "channel/SocketMessage.h"
#include "shell/ServiceClient.h"
#include "shell/ServiceProcess.h"
#include "shell/ServiceWatch.h"
#include "shell/Termination.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QTest>

#include <csignal>

using namespace testing;

namespace
{
/// Collects what arrives at the companion's end.
struct Inbox : GDUnixSocketServerDelegate {
    void didReceiveData(GDUnixSocketServer &, const QByteArray &data, const QString &) override
    {
        const QMutexLocker lock(&mutex);
        messages.append(splitter.feed(data));
    }
    QList<SocketMessage> received()
    {
        const QMutexLocker lock(&mutex);
        return messages;
    }

    QMutex mutex;
    SocketMessageSplitter splitter;
    QList<SocketMessage> messages;
};

/// Process id that a companion script wrote; 0 until then.
qint64 processIdIn(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toLongLong() : 0;
}
} // namespace

/// The companion process seen from the manager, with real processes.
class TestSupervision : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noticesTheEnd_data();
    void noticesTheEnd();
    void cannotStart_data();
    void cannotStart();
    void watchesAgain();
    void quitMatrix_data();
    void quitMatrix();
    void oneQuestionAtATime();
    void forwards();
    void forwardsLater_data();
    void forwardsLater();
    void connectFailureIsLogged();
    void refusesAMissingFolder();
};

void TestSupervision::noticesTheEnd_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<bool>("kill");
    QTest::newRow("killed") << QByteArray("echo $$ > \"$0.pid\"; exec sleep 60") << true;
    QTest::newRow("ignores the polite end, killed")
        << QByteArray("trap '' TERM; echo $$ > \"$0.pid\"; exec sleep 60") << true;
    QTest::newRow("dies at once") << QByteArray("exit 1") << false;
    QTest::newRow("dies later") << QByteArray("sleep 0.3") << false;
}

void TestSupervision::noticesTheEnd()
{
    QFETCH(QByteArray, script);
    QFETCH(bool, kill);
    ShellFixture fixture;
    fixture.files.addService(script);
    const QString program = shell::ServiceProcess::executableIn(fixture.files.bundle());
    shell::ServiceProcess service(program);
    int stops = 0;
    shell::ServiceWatch watch([&] { return service.isRunning(); }, [&] { ++stops; });
    QVERIFY(service.launch());
    watch.checkServiceRunning();
    QElapsedTimer sinceTheEnd;
    if (kill) {
        qint64 child = 0;
        QTRY_VERIFY((child = processIdIn(program + QStringLiteral(".pid"))) > 0);
        QCOMPARE(stops, 0);
        QVERIFY(service.isRunning());
        QCOMPARE(::kill(static_cast<pid_t>(child), SIGKILL), 0);
    }
    sinceTheEnd.start();
    QTRY_COMPARE_WITH_TIMEOUT(stops, 1, 4000);
    QVERIFY2(sinceTheEnd.elapsed() <= (kill ? 2100 : 2500), qPrintable(QString::number(sinceTheEnd.elapsed())));
    QVERIFY(!watch.isWatching());
}

void TestSupervision::cannotStart_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<QString>("line");
    QTest::newRow("missing") << false << QStringLiteral("ERROR: can't find FUSEService!");
    QTest::newRow("not executable") << true << QStringLiteral("ERROR: can't start FUSEService!");
}

void TestSupervision::cannotStart()
{
    QFETCH(bool, present);
    QFETCH(QString, line);
    ShellFixture fixture;
    if (present)
        fixture.files.addResource(QStringLiteral("FUSEService.app/Contents/MacOS/FUSEService"), "text");
    LogRecorder log;
    shell::ServiceProcess service(shell::ServiceProcess::executableIn(fixture.files.bundle()));
    QVERIFY(!service.launch());
    QVERIFY(!service.isRunning());
    QCOMPARE(log.lines(), QStringList{line});
}

void TestSupervision::watchesAgain()
{
    bool running = true;
    int stops = 0;
    shell::ServiceWatch watch([&] { return running; }, [&] { ++stops; }, std::chrono::milliseconds(10));
    for (int round = 1; round <= 2; ++round) {
        running = true;
        watch.checkServiceRunning();
        watch.checkServiceRunning();
        QTest::qWait(30);
        QCOMPARE(stops, round - 1);
        running = false;
        QTRY_COMPARE(stops, round);
        QTest::qWait(30);
        QCOMPARE(stops, round); // suspended until it is resumed
    }
}

void TestSupervision::quitMatrix_data()
{
    QTest::addColumn<bool>("mounted");
    QTest::addColumn<bool>("running");
    QTest::addColumn<bool>("busy");
    QTest::addColumn<int>("code"); // 0: nobody may be asked
    QTest::addColumn<bool>("ends");
    for (const bool mounted : {false, true})
        for (const bool running : {false, true})
            for (const bool busy : {false, true}) {
                const bool asks = mounted && running && busy;
                for (const int code : asks ? QList<int>{1000, 1001} : QList<int>{0})
                    QTest::addRow("mounted %d, running %d, busy %d, answer %d", mounted, running, busy, code)
                        << mounted << running << busy << code << (code != 1001);
            }
}

void TestSupervision::quitMatrix()
{
    QFETCH(bool, mounted);
    QFETCH(bool, running);
    QFETCH(bool, busy);
    QFETCH(int, code);
    QFETCH(bool, ends);
    ShellFixture fixture;
    if (mounted)
        fixture.host.volumes.mounted = {fixture.volume()};
    if (busy)
        fixture.host.volumes.busy = {fixture.volume()};
    fixture.alerts.codes = {code};
    shell::Termination termination(
        shell::VolumeControl(fixture.host.volumes), fixture.volume(), [&] { return running; },
        fixture.alerts.presenter());
    std::optional<bool> answer;
    termination.applicationShouldTerminate([&](bool mayEnd) { answer = mayEnd; });
    QTRY_VERIFY(answer.has_value());
    QCOMPARE(*answer, ends);
    QCOMPARE(fixture.alerts.texts.size(), code ? 1 : 0);
    if (code)
        QCOMPARE(fixture.alerts.buttons.first().size(), 2);
    const QList<std::pair<QString, bool>> forced{{fixture.volume(), true}};
    QCOMPARE(fixture.host.volumes.unmounted, mounted && running ? forced : forced.mid(1));

    // Signing out detaches whatever is there and asks by the same rule.
    fixture.alerts.codes = {code};
    answer.reset();
    fixture.host.volumes.unmounted.clear();
    fixture.alerts.texts.clear();
    if (mounted)
        fixture.host.volumes.mounted = {fixture.volume()};
    termination.checkIfUserWannaUmount([&](bool mayEnd) { answer = mayEnd; });
    QTRY_VERIFY(answer.has_value());
    QCOMPARE(*answer, ends);
    QCOMPARE(fixture.host.volumes.unmounted, forced);
    QCOMPARE(fixture.alerts.texts.size(), code ? 1 : 0);
}

void TestSupervision::oneQuestionAtATime()
{
    ShellFixture fixture;
    fixture.host.volumes.mounted = fixture.host.volumes.busy = {fixture.volume()};
    std::function<void(int)> user;
    shell::Termination termination(
        shell::VolumeControl(fixture.host.volumes), fixture.volume(), [] { return true; },
        [&](const QBAlert::Alert &, std::function<void(int)> done) { user = std::move(done); });
    QList<bool> first;
    QList<bool> second;
    termination.applicationShouldTerminate([&](bool mayEnd) { first.append(mayEnd); });
    QTRY_VERIFY(user);
    termination.applicationShouldTerminate([&](bool mayEnd) { second.append(mayEnd); });
    termination.checkIfUserWannaUmount([&](bool mayEnd) { second.append(mayEnd); });
    QCOMPARE(second, (QList<bool>{false, false}));
    QVERIFY(first.isEmpty());
    user(QBAlert::FirstButtonReturn);
    QCOMPARE(first, QList<bool>{true});
}

void TestSupervision::forwards()
{
    ShellFixture fixture;
    const QString path = fixture.folder.filePath(QStringLiteral("search_socket"));
    const auto inbox = std::make_shared<Inbox>();
    const auto server = GDUnixSocketServer::initWithSocketPath(path);
    QVERIFY(server);
    server->setDelegate(inbox);
    QVERIFY(server->listenWithError());
    shell::ServiceClient client(path, [] { return true; });
    client.handleAppleEvent(QStringLiteral("quillbox://lost")); // nothing is connected yet
    LogRecorder log;
    client.registerClient();
    QTRY_VERIFY(([&] {
        client.handleAppleEvent(QStringLiteral("quillbox://open?name=a%20b%22"));
        return !inbox->received().isEmpty();
    }()));
    const qsizetype before = inbox->received().size();
    client.handleSearchQBFile(QStringLiteral("text \"with\" 文档\n"));
    QTRY_VERIFY(inbox->received().size() > before);
    QCOMPARE(inbox->received().first(),
             (SocketMessage{QStringLiteral("AppEvent"), QStringLiteral("quillbox://open?name=a b\"")}));
    QCOMPARE(inbox->received().last(),
             (SocketMessage{QStringLiteral("RightService"), QStringLiteral("text \"with\" 文档\n")}));
    QCOMPARE(log.lines(), QStringList());
    server->close();
}

void TestSupervision::forwardsLater_data()
{
    QTest::addColumn<bool>("runsByThen");
    QTest::newRow("the companion came") << true;
    QTest::newRow("it did not") << false;
}

void TestSupervision::forwardsLater()
{
    QFETCH(bool, runsByThen);
    ShellFixture fixture;
    const QString path = fixture.folder.filePath(QStringLiteral("search_socket"));
    const auto inbox = std::make_shared<Inbox>();
    const auto server = GDUnixSocketServer::initWithSocketPath(path);
    server->setDelegate(inbox);
    QVERIFY(server->listenWithError());
    int asked = 0;
    shell::ServiceClient client(
        path, [&] { return ++asked == 2 && runsByThen; }, std::chrono::milliseconds(200));
    client.registerClient();
    client.handleSearchQBFile(QStringLiteral("later"));
    QCOMPARE(asked, 1);
    QTRY_COMPARE(asked, 2);
    if (runsByThen)
        QTRY_COMPARE(inbox->received().size(), 1);
    QTest::qWait(250);
    QCOMPARE(asked, 2); // one retry only
    QCOMPARE(inbox->received().size(), runsByThen ? 1 : 0);
    server->close();
}

void TestSupervision::connectFailureIsLogged()
{
    ShellFixture fixture;
    LogRecorder log;
    shell::ServiceClient client(fixture.folder.filePath(QStringLiteral("search_socket")), [] { return true; });
    client.registerClient();
    QTRY_VERIFY(
        log.contains(QStringLiteral("Quillbox[Fuse] Could not start client error:Failed to connect to socket")));
}

void TestSupervision::refusesAMissingFolder()
{
    QCOMPARE(shell::ServiceClient::socketPathIn(QStringLiteral("/f")), QStringLiteral("/f/search_socket"));
    LogRecorder log;
    const QString none = shell::ServiceClient::socketPathIn(QString());
    QVERIFY(none.isNull());
    QCOMPARE(log.lines().size(), 1);
    shell::ServiceClient client(none, [] { return true; });
    client.registerClient();
    QVERIFY(log.contains(QStringLiteral("Quillbox[Fuse] Could not start client error:")));
}

REGISTER_TEST(TestSupervision)
#include "TestSupervision.moc"
