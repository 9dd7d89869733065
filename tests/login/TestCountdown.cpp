#include "login/Countdown.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace std::chrono_literals;

/// The countdown of the verification window.
class TestCountdown : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsEverySecond();
    void keepsPace();
    void ignoresNothing();
};

REGISTER_TEST(TestCountdown)

static QList<qint64> shown(const QSignalSpy &remains)
{
    QList<qint64> all;
    for (const QVariantList &arguments : remains)
        all.append(arguments.constFirst().toLongLong());
    return all;
}

void TestCountdown::showsEverySecond()
{
    Countdown countdown(300ms);
    QSignalSpy remains(&countdown, &Countdown::remains);
    QSignalSpy over(&countdown, &Countdown::over);
    QElapsedTimer time;
    time.start();
    countdown.start(2);
    QCOMPARE(shown(remains), QList<qint64>{2}); // at once
    QTRY_COMPARE(over.count(), 1);
    QCOMPARE(shown(remains), QList<qint64>({2, 1, 0}));
    QVERIFY2(time.elapsed() >= 900, "0 was not shown for a second");
    QVERIFY(!countdown.isRunning());
}

void TestCountdown::keepsPace()
{
    Countdown countdown(100ms);
    QSignalSpy remains(&countdown, &Countdown::remains);
    QSignalSpy over(&countdown, &Countdown::over);
    countdown.start(5);
    QElapsedTimer time;
    time.start();
    QTest::qSleep(350); // a main thread that is held up
    QTRY_VERIFY(remains.count() > 1);
    QVERIFY2(shown(remains).constLast() <= 2, "seconds were lost");
    QTRY_COMPARE(over.count(), 1);
    QVERIFY(time.elapsed() >= 599);
    QList<qint64> all = shown(remains);
    QVERIFY(std::is_sorted(all.rbegin(), all.rend()) && std::unique(all.begin(), all.end()) == all.end());
}

void TestCountdown::ignoresNothing()
{
    Countdown countdown(50ms);
    QSignalSpy remains(&countdown, &Countdown::remains);
    for (const qint64 seconds : {0, -1})
        countdown.start(seconds);
    QVERIFY(!countdown.isRunning());
    countdown.start(100);
    countdown.start(0); // does not stop the one that runs
    QVERIFY(countdown.isRunning());
    countdown.stop();
    QTest::qWait(120);
    QCOMPARE(shown(remains), QList<qint64>{100});
}

#include "TestCountdown.moc"
