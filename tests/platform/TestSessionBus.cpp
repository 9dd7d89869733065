#include "platform/LaunchRequest.h"
#include "platform/linux/LinuxDistributedNotifications.h"
#include "platform/linux/LinuxLaunchEvents.h"
#include "platform/linux/SessionBus.h"
#include "support/LogRecorder.h"
#include "support/PrivateBus.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QProcess>
#include <QTest>

using namespace platform;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

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
    return {.reopen = [&events] { events.append(u"reopen"_s); },
            .openURL = [&events](const QString &url) { events.append(u"url "_s + url); },
            .serviceText = [&events](const QString &text) { events.append(u"text "_s + text); }};
}

} // namespace

class TestSessionBus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        daemon = std::make_unique<testing::PrivateBus>();
        QVERIFY(daemon->isRunning());
    }

    void cleanup() { daemon.reset(); }

    void notificationOfAProcessThatEndsRightAfter()
    {
        constexpr int rounds = 10;
        SessionBus bus;
        LinuxDistributedNotifications center(bus);
        QObject observer;
        QList<Notification> seen;
        int others = 0;
        center.addObserver(&observer, u"wanted"_s, [&](const Notification &notification) {
            QCOMPARE(QThread::currentThread(), thread());
            seen.append(notification);
        });
        center.addObserver(&observer, u"other"_s, [&](const Notification &) { ++others; });
        for (int round = 1; round <= rounds; ++round) {
            const QString value = u"值 %1"_s.arg(round);
            QCOMPARE(runPeer({u"post"_s, u"wanted"_s, u"key"_s, value}), 0);
            QTRY_COMPARE(seen.size(), round);
            QCOMPARE(seen.last().name, u"wanted"_s);
            QCOMPARE(seen.last().userInfo, (QVariantMap{{u"key"_s, value}}));
            QVERIFY(!seen.last().object.isValid());
        }
        QCOMPARE(others, 0);
    }

    void ownNotificationsArriveUntilTheObserverIsGone()
    {
        SessionBus bus;
        LinuxDistributedNotifications center(bus);
        auto observer = std::make_unique<QObject>();
        QObject witness;
        int seen = 0;
        int witnessed = 0;
        center.addObserver(observer.get(), u"n"_s, [&](const Notification &) { ++seen; });
        center.addObserver(&witness, u"n"_s, [&](const Notification &) { ++witnessed; });
        center.post(u"n"_s);
        QTRY_COMPARE(witnessed, 1);
        QCOMPARE(seen, 1);
        observer.reset();
        center.post(u"n"_s, {{u"a"_s, QVariantList{1, true}}});
        QTRY_COMPARE(witnessed, 2);
        QCOMPARE(seen, 1);
    }

    void laterLaunchHandsOver_data()
    {
        const testing::Rows<QStringList, QStringList> row("arguments", "events");
        const QString url = u"quillbox://open/%E4%B8%AD?a=1 2&b='\"$(id)"_s;
        const QString option = u"--service-text"_s;
        const QString reopen = u"reopen"_s;
        row("nothing", {}, {reopen});
        row("address", {url}, {u"url "_s + url});
        row("two addresses", {url, u"a+b:c"_s}, {u"url "_s + url, u"url a+b:c"_s});
        row("text", {option, u"找 --x"_s}, {u"text 找 --x"_s});
        row("text like an option", {option, option}, {u"text "_s + option});
        row("text that is empty", {option, QString()}, {u"text "_s});
        row("text missing", {option}, {reopen});
        row("options and files", {u"-x"_s, u"/a:b"_s, u":"_s, u"1a:b"_s}, {reopen});
        row("too long", {option, QString(longestLaunchText + 1, u'x')}, {reopen});
    }
    void laterLaunchHandsOver()
    {
        QFETCH(QStringList, arguments);
        SessionBus bus;
        LinuxLaunchEvents first(bus);
        QStringList events;
        auto observer = std::make_unique<QObject>();
        first.listen(observer.get(), recording(events));
        QCOMPARE(runPeer(QStringList{u"hand-over"_s} + arguments), 0);
        QTRY_COMPARE(events.isEmpty(), false);
        QTEST(events, "events");
        observer.reset();
        QCOMPARE(runPeer({u"hand-over"_s}), 0);
        QTEST(events, "events");
    }

    void handOverNeedsAFirstInstance()
    {
        SessionBus bus;
        LinuxLaunchEvents later(bus, 0ms);
        QVERIFY(!later.handOver({}));
        QCOMPARE(runPeer({u"hand-over"_s}), 1);
    }

    void badCallsAreRefused()
    {
        SessionBus bus;
        LinuxLaunchEvents first(bus);
        QStringList events;
        first.listen(this, recording(events));
        SessionBus stranger;
        const QList<std::pair<QString, QVariantList>> calls{
            {u"none"_s, {}},
            {u"reopen"_s, {u"surplus"_s}},
            {u"openURL"_s, {}},
            {u"openURL"_s, {5}},
            {u"openURL"_s, {u"a:b"_s, u"c:d"_s}},
            {u"serviceText"_s, {QString(longestLaunchText + 1, u'x')}},
        };
        for (const auto &[method, arguments] : calls) {
            QDBusMessage call = QDBusMessage::createMethodCall(u"com.velto.quillbox"_s, u"/com/velto/quillbox"_s,
                                                               u"com.velto.quillbox.LaunchEvents"_s, method);
            call.setArguments(arguments);
            QDBusPendingCallWatcher answer(stranger.connection().asyncCall(call));
            QTRY_VERIFY(answer.isFinished());
            QVERIFY2(answer.isError(), qPrintable(method));
        }
        QVERIFY(events.isEmpty());
    }

    void everythingComesBackAfterALoss()
    {
        SessionBus bus;
        LinuxDistributedNotifications center(bus);
        LinuxLaunchEvents first(bus);
        QObject observer;
        int seen = 0;
        QStringList events;
        center.addObserver(&observer, u"n"_s, [&](const Notification &) { ++seen; });
        first.listen(&observer, recording(events));
        for (int loss = 1; loss <= 2; ++loss) {
            const testing::LogRecorder recorder;
            daemon->stop();
            QTRY_VERIFY(recorder.contains(u"The session bus is gone"_s));
            daemon->start();
            QVERIFY(daemon->isRunning());
            // The hand-over waits for the first instance's return; the name comes after the subscriptions.
            events.clear();
            QVERIFY(QTest::qWaitFor([] { return runPeer({u"hand-over"_s}) == 0; }, 20'000));
            QTRY_VERIFY(!events.isEmpty());
            QCOMPARE(runPeer({u"post"_s, u"n"_s}), 0);
            QTRY_COMPARE(seen, loss);
        }
        // A loss that nobody has noticed yet is found at the next use.
        daemon->stop();
        daemon->start();
        center.post(u"n"_s);
        QTRY_COMPARE(seen, 3);
    }

    void withoutABus()
    {
        daemon.reset();
        const testing::LogRecorder recorder;
        SessionBus bus;
        LinuxDistributedNotifications center(bus);
        LinuxLaunchEvents launches(bus);
        center.addObserver(this, u"n"_s, [](const Notification &) {});
        for (int post = 0; post < 3; ++post)
            center.post(u"n"_s);
        launches.listen(this, {});
        QVERIFY(!launches.handOver({}));
        QCOMPARE(recorder.lines().filter(u"No session bus"_s).size(), 1);
    }

private:
    std::unique_ptr<testing::PrivateBus> daemon;
};

REGISTER_TEST(TestSessionBus)
#include "TestSessionBus.moc"
