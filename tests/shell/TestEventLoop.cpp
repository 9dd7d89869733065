#include "DelegateFixture.h"

#include "support/TestMain.h"

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <QThread>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
constexpr std::chrono::milliseconds Beat{5};
constexpr qint64 LongestBlock = 50; // milliseconds

/// Watches from a thread of its own whether the main thread sleeps in the kernel outside the event loop's own wait:
/// then something blocks it, however busy the machine is, as a thread that only waits for the processor does not sleep.
class BlockMeter
{
public:
    BlockMeter() : state("/proc/self/task/" + std::to_string(::gettid()) + "/stat"), watcher([this] { watch(); })
    {
        QAbstractEventDispatcher *loop = QAbstractEventDispatcher::instance();
        QObject::connect(loop, &QAbstractEventDispatcher::aboutToBlock, &context, [this] { waitsForEvents = true; });
        QObject::connect(loop, &QAbstractEventDispatcher::awake, &context, [this] {
            waitsForEvents = false;
            ++turns;
        });
    }
    ~BlockMeter()
    {
        ended = true;
        watcher.join();
    }
    BlockMeter(const BlockMeter &) = delete;
    BlockMeter &operator=(const BlockMeter &) = delete;

    /// The longest so far, in milliseconds.
    qint64 longest() const { return longestBlock; }

private:
    void watch()
    {
        QElapsedTimer sleeping;
        quint64 lastTurn = 0;
        for (; !ended; std::this_thread::sleep_for(Beat)) {
            const bool sleeps = sleepsOutsideTheLoop();
            // Several short sleeps with turns of the loop between them are no long one.
            if (const quint64 turn = turns; !sleeps || turn != std::exchange(lastTurn, turn) || !sleeping.isValid())
                sleeping.start();
            longestBlock = qMax<qint64>(longestBlock, sleeps ? sleeping.elapsed() : 0);
        }
    }

    bool sleepsOutsideTheLoop() const
    {
        if (waitsForEvents)
            return false;
        std::ifstream file(state);
        std::string line;
        std::getline(file, line);
        const std::size_t name = line.rfind(')');
        const char letter = name == std::string::npos ? 'R' : line.at(name + 2);
        return (letter == 'S' || letter == 'D') && !waitsForEvents;
    }

    const std::string state;
    std::atomic<bool> ended = false;
    std::atomic<bool> waitsForEvents = false;
    std::atomic<quint64> turns = 0;
    std::atomic<qint64> longestBlock = 0;
    QObject context;
    std::thread watcher;
};
} // namespace

class TestEventLoop : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void seesBlockingCalls();
    void neverBlocksOnASlowServer();
};

/// The meter itself: it must see what it is there for.
void TestEventLoop::seesBlockingCalls()
{
    const BlockMeter meter;
    QTest::qWait(100);
    QVERIFY2(meter.longest() < LongestBlock, qPrintable(QString::number(meter.longest())));
    QThread::msleep(4 * LongestBlock);
    QTest::qWait(20);
    QVERIFY2(meter.longest() > LongestBlock, qPrintable(QString::number(meter.longest())));
}

/// Every reply takes five seconds, from the server check through the sign-in to the running companion.
void TestEventLoop::neverBlocksOnASlowServer()
{
    {
        // Loading fonts and pictures for the first window ever is not the server's doing.
        DelegateFixture warm;
        warm.delegate().showLoginWindowAllowAutoLogin(false);
        QTRY_VERIFY(warm.loginShows());
    }
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.useServer();
    QVERIFY(fixture.server->useScenario({{u"delay_ms"_s, 5000}}));
    const BlockMeter meter;
    AppDelegate &delegate = fixture.delegate();
    delegate.applicationDidFinishLaunching();
    QTRY_VERIFY_WITH_TIMEOUT(fixture.loginShows(), 40000);
    QWidget *window = delegate.loginFlow().loginWindow()->window();
    window->findChild<QLineEdit *>(u"txtUserName"_s)->setText(demoName());
    window->findChild<QLineEdit *>(u"txtPassword"_s)->setText(demoPassword());
    auto *button = window->findChild<QAbstractButton *>(u"btnLogin"_s);
    QTRY_VERIFY_WITH_TIMEOUT(button->isEnabled(), 20000);
    button->click();
    QTRY_VERIFY_WITH_TIMEOUT(delegate.serviceRunning(), 60000);
    fixture.killService();
    QTRY_VERIFY_WITH_TIMEOUT(fixture.loginShows(), 5000);
    QElapsedTimer quitting;
    quitting.start();
    delegate.terminate();
    QTRY_COMPARE(fixture.ended, 1);
    QVERIFY2(quitting.elapsed() < 1000, qPrintable(QString::number(quitting.elapsed())));
    QVERIFY2(meter.longest() <= LongestBlock, qPrintable(QString::number(meter.longest())));
}

REGISTER_TEST(TestEventLoop)
#include "TestEventLoop.moc"
