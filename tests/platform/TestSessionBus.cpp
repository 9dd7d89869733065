#include "platform/LaunchRequest.h"
#include "platform/linux/LinuxDistributedNotifications.h"
#include "platform/linux/LinuxLaunchEvents.h"
#include "platform/linux/SessionBus.h"
#include "support/LogRecorder.h"
#include "support/PrivateBus.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QProcess>
#include <QTest>

using namespace platform;
using namespace std::chrono_literals;

namespace
{

QString peer()
{
    return QStringLiteral(PLATFORM_PEER);
}

/// Runs the other process while this one's event loop goes on. Its exit status.
int runPeer(const QStringList &arguments)
{
    QProcess process;
    process.start(peer(), arguments);
    return QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 30'000) ? process.exitCode() : -1;
}

/// What later launches asked for, one text each.
LaunchEvents::Handlers recording(QStringList &events)
{
    return {.reopen = [&events] { events.append(QStringLiteral("reopen")); },
            .openURL = [&events](const QString &url) { events.append(QStringLiteral("url ") + url); },
            .serviceText = [&events](const QString &text) { events.append(QStringLiteral("text ") + text); }};
}

} // namespace

class TestSessionBus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void notificationOfAProcessThatEndsRightAfter();
    void ownNotificationsArriveUntilTheObserverIsGone();
    void laterLaunchHandsOver_data();
    void laterLaunchHandsOver();
    void handOverNeedsAFirstInstance();
    void badCallsAreRefused();
    void everythingComesBackAfterALoss();
    void withoutABus();

private:
    std::unique_ptr<testing::PrivateBus> daemon;
};

void TestSessionBus::init()
{
    daemon = std::make_unique<testing::PrivateBus>();
    QVERIFY(daemon->isRunning());
}

void TestSessionBus::cleanup()
{
    daemon.reset();
}

void TestSessionBus::notificationOfAProcessThatEndsRightAfter()
{
    constexpr int rounds = 10;
    SessionBus bus;
    LinuxDistributedNotifications center(bus);
    QObject observer;
    QList<Notification> seen;
    int others = 0;
    center.addObserver(&observer, QStringLiteral("wanted"), [&](const Notification &notification) {
        QCOMPARE(QThread::currentThread(), thread());
        seen.append(notification);
    });
    center.addObserver(&observer, QStringLiteral("other"), [&](const Notification &) { ++others; });
    for (int round = 1; round <= rounds; ++round) {
        const QString value = QStringLiteral("值 %1").arg(round);
        QCOMPARE(runPeer({QStringLiteral("post"), QStringLiteral("wanted"), QStringLiteral("key"), value}), 0);
        QTRY_COMPARE(seen.size(), round);
        QCOMPARE(seen.last().name, QStringLiteral("wanted"));
        QCOMPARE(seen.last().userInfo, (QVariantMap{{QStringLiteral("key"), value}}));
        QVERIFY(!seen.last().object.isValid());
    }
    QCOMPARE(others, 0);
}

void TestSessionBus::ownNotificationsArriveUntilTheObserverIsGone()
{
    SessionBus bus;
    LinuxDistributedNotifications center(bus);
    auto observer = std::make_unique<QObject>();
    QObject witness;
    int seen = 0;
    int witnessed = 0;
    center.addObserver(observer.get(), QStringLiteral("n"), [&](const Notification &) { ++seen; });
    center.addObserver(&witness, QStringLiteral("n"), [&](const Notification &) { ++witnessed; });
    center.post(QStringLiteral("n"));
    QTRY_COMPARE(witnessed, 1);
    QCOMPARE(seen, 1);
    observer.reset();
    center.post(QStringLiteral("n"), {{QStringLiteral("a"), QVariantList{1, true}}});
    QTRY_COMPARE(witnessed, 2);
    QCOMPARE(seen, 1);
}

void TestSessionBus::laterLaunchHandsOver_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("events");
    const auto row = [](const char *name, const QStringList &arguments, const QStringList &events) {
        QTest::newRow(name) << arguments << events;
    };
    const QString url = QStringLiteral("quillbox://open/%E4%B8%AD?a=1 2&b='\"$(id)");
    const QString option = QStringLiteral("--service-text");
    const QString reopen = QStringLiteral("reopen");
    row("nothing", {}, {reopen});
    row("address", {url}, {QStringLiteral("url ") + url});
    row("two addresses", {url, QStringLiteral("a+b:c")}, {QStringLiteral("url ") + url, QStringLiteral("url a+b:c")});
    row("text", {option, QStringLiteral("找 --x")}, {QStringLiteral("text 找 --x")});
    row("text like an option", {option, option}, {QStringLiteral("text ") + option});
    row("text that is empty", {option, QString()}, {QStringLiteral("text ")});
    row("text missing", {option}, {reopen});
    row("options and files",
        {QStringLiteral("-x"), QStringLiteral("/a:b"), QStringLiteral(":"), QStringLiteral("1a:b")}, {reopen});
    row("too long", {option, QString(longestLaunchText + 1, u'x')}, {reopen});
}

void TestSessionBus::laterLaunchHandsOver()
{
    QFETCH(QStringList, arguments);
    SessionBus bus;
    LinuxLaunchEvents first(bus);
    QStringList events;
    auto observer = std::make_unique<QObject>();
    first.listen(observer.get(), recording(events));
    QCOMPARE(runPeer(QStringList{QStringLiteral("hand-over")} + arguments), 0);
    QTRY_COMPARE(events.isEmpty(), false);
    QTEST(events, "events");
    observer.reset();
    QCOMPARE(runPeer({QStringLiteral("hand-over")}), 0);
    QTEST(events, "events");
}

void TestSessionBus::handOverNeedsAFirstInstance()
{
    SessionBus bus;
    LinuxLaunchEvents later(bus, 0ms);
    QVERIFY(!later.handOver({}));
    QCOMPARE(runPeer({QStringLiteral("hand-over")}), 1);
}

void TestSessionBus::badCallsAreRefused()
{
    SessionBus bus;
    LinuxLaunchEvents first(bus);
    QStringList events;
    first.listen(this, recording(events));
    SessionBus stranger;
    const QList<std::pair<QString, QVariantList>> calls{
        {QStringLiteral("none"), {}},
        {QStringLiteral("reopen"), {QStringLiteral("surplus")}},
        {QStringLiteral("openURL"), {}},
        {QStringLiteral("openURL"), {5}},
        {QStringLiteral("openURL"), {QStringLiteral("a:b"), QStringLiteral("c:d")}},
        {QStringLiteral("serviceText"), {QString(longestLaunchText + 1, u'x')}},
    };
    for (const auto &[method, arguments] : calls) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(QStringLiteral("com.velto.quillbox"), QStringLiteral("/com/velto/quillbox"),
                                           QStringLiteral("com.velto.quillbox.LaunchEvents"), method);
        call.setArguments(arguments);
        QDBusPendingCallWatcher answer(stranger.connection().asyncCall(call));
        QTRY_VERIFY(answer.isFinished());
        QVERIFY2(answer.isError(), qPrintable(method));
    }
    QVERIFY(events.isEmpty());
}

void TestSessionBus::everythingComesBackAfterALoss()
{
    SessionBus bus;
    LinuxDistributedNotifications center(bus);
    LinuxLaunchEvents first(bus);
    QObject observer;
    int seen = 0;
    QStringList events;
    center.addObserver(&observer, QStringLiteral("n"), [&](const Notification &) { ++seen; });
    first.listen(&observer, recording(events));
    for (int loss = 1; loss <= 2; ++loss) {
        const testing::LogRecorder recorder;
        daemon->stop();
        QTRY_VERIFY(recorder.contains(QStringLiteral("The session bus is gone")));
        daemon->start();
        QVERIFY(daemon->isRunning());
        // The hand-over waits for the first instance's return; the name comes after the subscriptions.
        events.clear();
        QVERIFY(QTest::qWaitFor([] { return runPeer({QStringLiteral("hand-over")}) == 0; }, 20'000));
        QTRY_VERIFY(!events.isEmpty());
        QCOMPARE(runPeer({QStringLiteral("post"), QStringLiteral("n")}), 0);
        QTRY_COMPARE(seen, loss);
    }
    // A loss that nobody has noticed yet is found at the next use.
    daemon->stop();
    daemon->start();
    center.post(QStringLiteral("n"));
    QTRY_COMPARE(seen, 3);
}

void TestSessionBus::withoutABus()
{
    daemon.reset();
    const testing::LogRecorder recorder;
    SessionBus bus;
    LinuxDistributedNotifications center(bus);
    LinuxLaunchEvents launches(bus);
    center.addObserver(this, QStringLiteral("n"), [](const Notification &) {});
    for (int post = 0; post < 3; ++post)
        center.post(QStringLiteral("n"));
    launches.listen(this, {});
    QVERIFY(!launches.handOver({}));
    QCOMPARE(recorder.lines().filter(QStringLiteral("No session bus")).size(), 1);
}

REGISTER_TEST(TestSessionBus)
#include "TestSessionBus.moc"
