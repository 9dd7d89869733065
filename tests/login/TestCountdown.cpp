#include "login/Countdown.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTest>

using namespace std::chrono_literals;

namespace
{
struct Counted {
    explicit Counted(std::chrono::milliseconds second) : countdown(second)
    {
        QObject::connect(&countdown, &Countdown::remains, [this](qint64 seconds) { shown.append(seconds); });
        QObject::connect(&countdown, &Countdown::over, [this] { ++ends; });
    }

    QList<qint64> shown;
    int ends = 0;
    Countdown countdown;
};
} // namespace

/// The countdown of the verification window.
class TestCountdown : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsEverySecond()
    {
        Counted counted(300ms);
        QElapsedTimer time;
        time.start();
        counted.countdown.start(2);
        QCOMPARE(counted.shown, QList<qint64>{2}); // at once
        QTRY_COMPARE(counted.ends, 1);
        QCOMPARE(counted.shown, QList<qint64>({2, 1, 0}));
        QVERIFY2(time.elapsed() >= 900, "0 was not shown for a second");
        QVERIFY(!counted.countdown.isRunning());
    }

    void keepsPace()
    {
        Counted counted(100ms);
        QElapsedTimer time;
        time.start();
        counted.countdown.start(5);
        QTest::qSleep(350); // a main thread that is held up
        QTRY_VERIFY(counted.shown.size() > 1);
        QVERIFY2(counted.shown.constLast() <= 2, "seconds were lost");
        QTRY_COMPARE(counted.ends, 1);
        QVERIFY(time.elapsed() >= 599);
        QList<qint64> all = counted.shown;
        QVERIFY(std::is_sorted(all.rbegin(), all.rend()) && std::unique(all.begin(), all.end()) == all.end());
    }

    void ignoresNothing()
    {
        Counted counted(50ms);
        for (const qint64 seconds : {0, -1})
            counted.countdown.start(seconds);
        QVERIFY(!counted.countdown.isRunning());
        counted.countdown.start(100);
        counted.countdown.start(0); // does not stop the one that runs
        QVERIFY(counted.countdown.isRunning());
        counted.countdown.stop();
        QTest::qWait(120);
        QCOMPARE(counted.shown, QList<qint64>{100});
    }
};

REGISTER_TEST(TestCountdown)
#include "TestCountdown.moc"
