#include "platform/BackgroundPool.h"
#include "platform/Dispatch.h"
#include "platform/NotificationCenter.h"
#include "support/TestMain.h"

#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <atomic>
#include <semaphore>

using namespace platform;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestDispatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resultReachesTheMainThreadOnce()
    {
        int results = 0;
        QThread *worker = nullptr;
        QThread *receiver = nullptr;
        inBackground(
            this, [] { return QThread::currentThread(); },
            [&](QThread *thread) {
                worker = thread;
                receiver = QThread::currentThread();
                ++results;
            });
        bool voidEnded = false;
        inBackground(
            this, [] {}, [&] { voidEnded = true; });
        QTRY_VERIFY(results > 0 && voidEnded);
        QCoreApplication::processEvents();
        QCOMPARE(results, 1);
        QCOMPARE(receiver, thread());
        QVERIFY(worker != thread());
    }

    void mainWorkRunsLaterAndInOrder()
    {
        QList<int> order;
        for (int number = 0; number < 3; ++number)
            dispatchMain(this, [&order, number] { order.append(number); });
        dispatchAfter(1ms, this, [&] { order.append(3); });
        QVERIFY(order.isEmpty());
        QTRY_COMPARE(order, (QList<int>{0, 1, 2, 3}));
    }

    void workOfADeadContextIsDropped()
    {
        auto context = std::make_unique<QObject>();
        const auto held = std::make_shared<int>(0);
        int runs = 0;
        QSemaphore started;
        QSemaphore gone;
        dispatchMain(context.get(), [&runs, held] { ++runs; });
        dispatchAfter(0ms, context.get(), [&runs, held] { ++runs; });
        inBackground(
            context.get(),
            [&] {
                started.release();
                gone.acquire();
                return 1;
            },
            [&runs, held](int) { ++runs; });
        started.acquire();
        context.reset();
        gone.release();
        QTRY_COMPARE(held.use_count(), 1L); // everything that was queued is gone, not only late
        QCOMPARE(runs, 0);
    }

    void blockedJobsDoNotHoldUpTheNext()
    {
        constexpr int blockedJobs = 40;
        QSemaphore release;
        QSemaphore blocked;
        QSemaphore ended;
        for (int job = 0; job < blockedJobs; ++job)
            dispatchGlobal([&] {
                blocked.release();
                release.acquire();
                ended.release();
            });
        QVERIFY(blocked.tryAcquire(blockedJobs, 10'000));
        dispatchGlobal([&] { ended.release(); });
        QVERIFY(ended.tryAcquire(1, 10'000));
        release.release(blockedJobs);
        QVERIFY(ended.tryAcquire(blockedJobs, 10'000));
    }

    void drainDropsWhatIsQueuedAndWaitsForWhatRuns()
    {
        BackgroundPool pool(1);
        QSemaphore started;
        QSemaphore release;
        std::atomic<int> ended = 0;
        pool.run([&] {
            started.release();
            release.acquire();
            ++ended;
        });
        pool.run([&] { ended = 100; });
        started.acquire();
        QVERIFY(!pool.drain(1ms));
        pool.run([&] { ended = 200; });
        release.release();
        QVERIFY(pool.drain(10s));
        QCOMPARE(ended.load(), 1);
    }

    void postsRunAtOnceOnTheMainThreadAndQueuedFromOthers()
    {
        NotificationCenter center;
        QObject observer;
        QList<Notification> seen;
        QThread *seenOn = nullptr;
        center.addObserver(&observer, u"a"_s, [&](const Notification &notification) {
            seen.append(notification);
            seenOn = QThread::currentThread();
        });
        center.post(u"b"_s);
        center.post(u"a"_s, 5, {{u"k"_s, true}});
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen[0].object, QVariant(5));
        QCOMPARE(seen[0].userInfo, (QVariantMap{{u"k"_s, true}}));
        QSemaphore posted;
        dispatchGlobal([&] {
            center.post(u"a"_s);
            posted.release();
        });
        posted.acquire();
        QCOMPARE(seen.size(), 1);
        QTRY_COMPARE(seen.size(), 2);
        QCOMPARE(seenOn, thread());
        QVERIFY(!seen[1].object.isValid());
        center.removeObserver(&observer, u"a"_s);
        center.post(u"a"_s);
        QCOMPARE(seen.size(), 2);
    }

    void observersComeAndGoWhileOneIsTold()
    {
        NotificationCenter center;
        const QString name = u"n"_s;
        QObject first;
        auto second = std::make_unique<QObject>();
        QObject third;
        QObject late;
        QStringList told;
        center.addObserver(&first, name, [&](const Notification &) {
            told.append(u"first"_s);
            second.reset();
            center.removeObserver(&third, name);
            if (told.size() == 1)
                center.addObserver(&late, name, [&](const Notification &) { told.append(u"late"_s); });
        });
        center.addObserver(second.get(), name, [&](const Notification &) { told.append(u"second"_s); });
        center.addObserver(&third, name, [&](const Notification &) { told.append(u"third"_s); });
        center.post(name);
        QCOMPARE(told, QStringList{u"first"_s});
        center.post(name);
        QCOMPARE(told.mid(1), (QStringList{u"first"_s, u"late"_s}));
    }

    void queuedPostOfADeadCentreIsDropped()
    {
        auto center = std::make_unique<NotificationCenter>();
        QObject observer;
        const auto held = std::make_shared<int>(0);
        int seen = 0;
        center->addObserver(&observer, u"a"_s, [&seen, held](const Notification &) { ++seen; });
        std::binary_semaphore posted(0);
        dispatchGlobal([&] {
            center->post(u"a"_s);
            posted.release();
        });
        posted.acquire();
        center.reset();
        QCOMPARE(held.use_count(), 1L);
        bool later = false;
        dispatchMain(this, [&] { later = true; });
        QTRY_VERIFY(later);
        QCOMPARE(seen, 0);
    }
};

REGISTER_TEST(TestDispatch)
#include "TestDispatch.moc"
