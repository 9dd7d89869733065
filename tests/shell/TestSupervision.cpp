#include "ShellFixture.h"

#include "shell/ServiceClient.h"
#include "shell/ServiceProcess.h"
#include "shell/ServiceWatch.h"
#include "shell/Termination.h"
#include "support/Cases.h"
#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
struct End {
    const char *name;
    QByteArray script;
    bool kill;
};
const QList<End> Ends{{"killed", "echo $$ > \"$0.pid\"; exec sleep 60", true},
                      {"ignores the polite end, killed", "trap '' TERM; echo $$ > \"$0.pid\"; exec sleep 60", true},
                      {"dies at once", "exit 1", false}};
} // namespace

/// The companion process seen from the manager, with real processes.
class TestSupervision : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noticesTheEnd_data() { addCases(Ends); }
    void noticesTheEnd();
    void cannotStart();
    void watchesAgain();
    void quitMatrix_data();
    void quitMatrix();
    void oneQuestionAtATime();
    void forwards();
    void forwardsLater_data();
    void forwardsLater();
    void connectFailureIsLogged();
};

void TestSupervision::noticesTheEnd()
{
    const auto &[name, script, kill] = currentCase(Ends);
    ShellFixture fixture;
    fixture.files.addService(script);
    const QString program = shell::ServiceProcess::executableIn(fixture.files.bundle());
    shell::ServiceProcess service(program);
    int stops = 0;
    shell::ServiceWatch watch([&] { return service.isRunning(); }, [&] { ++stops; });
    QVERIFY(service.launch());
    watch.checkServiceRunning();
    if (kill) {
        QTRY_VERIFY(contentOf(program + u".pid"_s).endsWith('\n'));
        QCOMPARE(stops, 0);
        QVERIFY(service.isRunning());
        QCOMPARE(::kill(contentOf(program + u".pid"_s).trimmed().toInt(), SIGKILL), 0);
    }
    QElapsedTimer sinceTheEnd;
    sinceTheEnd.start();
    QTRY_COMPARE_WITH_TIMEOUT(stops, 1, 4000);
    QVERIFY2(sinceTheEnd.elapsed() <= (kill ? 2100 : 2500), qPrintable(QString::number(sinceTheEnd.elapsed())));
    QVERIFY(!watch.isWatching());
}

void TestSupervision::cannotStart()
{
    ShellFixture fixture;
    LogRecorder log;
    for (const bool present : {false, true}) {
        if (present)
            fixture.files.addResource(u"FUSEService.app/Contents/MacOS/FUSEService"_s, "text");
        shell::ServiceProcess service(shell::ServiceProcess::executableIn(fixture.files.bundle()));
        QVERIFY(!service.launch());
        QVERIFY(!service.isRunning());
    }
    QCOMPARE(log.lines(), (QStringList{u"ERROR: can't find FUSEService!"_s, u"ERROR: can't start FUSEService!"_s}));
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
    for (const bool mounted : {false, true})
        for (const bool running : {false, true})
            for (const bool busy : {false, true})
                for (const int code : mounted &&running &&busy ? QList<int>{1000, 1001} : QList<int>{0})
                    QTest::addRow("mounted %d, running %d, busy %d, answer %d", mounted, running, busy, code)
                        << mounted << running << busy << code;
}

/// Signing out detaches whatever is there, quitting only what is in use; both ask by the same rule.
void TestSupervision::quitMatrix()
{
    QFETCH(bool, mounted);
    QFETCH(bool, running);
    QFETCH(bool, busy);
    QFETCH(int, code);
    for (const bool signsOut : {false, true}) {
        ShellFixture fixture;
        if (mounted)
            fixture.host.volumes.mounted = {fixture.volume()};
        if (busy)
            fixture.host.volumes.busy = {fixture.volume()};
        fixture.alerts.codes = {code};
        shell::Termination termination(
            shell::VolumeControl(fixture.host.volumes), fixture.volume(), [isRunning = running] { return isRunning; },
            fixture.alerts.presenter());
        std::optional<bool> answer;
        const auto reply = [&](bool mayEnd) { answer = mayEnd; };
        signsOut ? termination.checkIfUserWannaUmount(reply) : termination.applicationShouldTerminate(reply);
        QTRY_VERIFY(answer.has_value());
        QCOMPARE(*answer, code != 1001);
        QCOMPARE(fixture.alerts.buttons.size(), code ? 1 : 0);
        QCOMPARE(fixture.alerts.buttons.value(0).size(), code ? 2 : 0);
        const QList<std::pair<QString, bool>> forced{{fixture.volume(), true}};
        QCOMPARE(fixture.host.volumes.unmounted, signsOut || (mounted && running) ? forced : forced.mid(1));
    }
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
    const CompanionEnd companion(fixture.folder.path());
    shell::ServiceClient client(companion.path, [] { return true; });
    LogRecorder log;
    // The companion runs but has not announced itself: nothing is lost, and the order stays.
    client.handleAppleEvent(u"quillbox://open?name=a%20b%22"_s);
    client.handleSearchQBFile(u"text \"with\" 文档\n"_s);
    client.registerClient();
    client.handleAppleEvent(u"quillbox://third"_s);
    QTRY_COMPARE(companion.received(), (QList<SocketMessage>{{u"AppEvent"_s, u"quillbox://open?name=a b\""_s},
                                                             {u"RightService"_s, u"text \"with\" 文档\n"_s},
                                                             {u"AppEvent"_s, u"quillbox://third"_s}}));
    // What waits for a companion that ends is not for the next one.
    client.close();
    client.handleAppleEvent(u"quillbox://of-before"_s);
    client.close();
    client.registerClient();
    client.handleAppleEvent(u"quillbox://now"_s);
    QTRY_COMPARE(companion.received().size(), 4);
    QCOMPARE(companion.received().last().text, u"quillbox://now"_s);
    QCOMPARE(log.lines(), QStringList());
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
    const CompanionEnd companion(fixture.folder.path());
    int asked = 0;
    shell::ServiceClient client(
        companion.path, [&] { return ++asked == 2 && runsByThen; }, std::chrono::milliseconds(200));
    client.registerClient();
    client.handleSearchQBFile(u"later"_s);
    QCOMPARE(asked, 1);
    QTRY_COMPARE(asked, 2);
    QTRY_COMPARE(companion.received().size(), int(runsByThen));
    QTest::qWait(250);
    QCOMPARE(asked, 2); // one retry only
    QCOMPARE(companion.received().size(), int(runsByThen));
}

void TestSupervision::connectFailureIsLogged()
{
    ShellFixture fixture;
    const QString line = u"Quillbox[Fuse] Could not start client error:"_s;
    LogRecorder log;
    shell::ServiceClient(QString(), [] { return true; }).registerClient();
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().first().startsWith(line));
    shell::ServiceClient client(fixture.folder.filePath(u"search_socket"_s), [] { return true; });
    client.registerClient();
    QTRY_VERIFY(log.contains(line + u"Failed to connect to socket"_s));
    QVERIFY(shell::ServiceClient::socketPathIn(QString()).isNull());
}

REGISTER_TEST(TestSupervision)
#include "TestSupervision.moc"
