#include "DelegateFixture.h"

#include "platform/Log.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <QThread>

#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
constexpr int Beat = 5; // milliseconds
constexpr qint64 LongestStall = 50;

/// Watches the main thread from another one, in two ways. How long the thread stayed away from its event loop says what
/// a user feels, but on a busy machine it also counts the time that others got the processor; what held up the watching
/// thread as well is therefore told apart. Whether the thread sleeps in the kernel outside the loop's own wait says
/// that something blocks it, however busy the machine is: a thread that only waits for the processor does not sleep.
class StallMeter
{
public:
    StallMeter() : state("/proc/self/task/" + std::to_string(::gettid()) + "/stat"), watcher([this] { watch(); })
    {
        QAbstractEventDispatcher *loop = QAbstractEventDispatcher::instance();
        QObject::connect(loop, &QAbstractEventDispatcher::aboutToBlock, &timer, [this] { waitsForEvents = true; });
        QObject::connect(loop, &QAbstractEventDispatcher::awake, &timer, [this] {
            waitsForEvents = false;
            ++turns;
        });
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] {
            ++turns;
            ++beats;
            worst = qMax(worst, sinceBeat.elapsed());
            sinceBeat.start();
        });
        sinceBeat.start();
        timer.setTimerType(Qt::PreciseTimer);
        timer.start(Beat);
    }
    ~StallMeter()
    {
        ended = true;
        watcher.join();
    }
    StallMeter(const StallMeter &) = delete;
    StallMeter &operator=(const StallMeter &) = delete;

    qint64 stall() const { return worst; }
    qint64 machine() const { return machineStall; }
    /// Longest sleep outside the loop's own wait.
    qint64 blocked() const { return longestBlock; }
    qint64 beatCount() const { return beats; }

private:
    void watch()
    {
        QElapsedTimer since;
        QElapsedTimer sleeping;
        quint64 lastTurn = 0;
        for (since.start(); !ended; since.start()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(Beat));
            machineStall = qMax<qint64>(machineStall, since.elapsed());
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
    std::atomic<qint64> machineStall = 0;
    std::atomic<qint64> longestBlock = 0;
    qint64 worst = 0;
    qint64 beats = 0;
    QElapsedTimer sinceBeat;
    QTimer timer;
    std::thread watcher;
};
} // namespace

class TestEventLoop : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void seesBlockingCalls();
    void neverStallsOnASlowServer();
};

/// The meter itself: it must see what it is there for.
void TestEventLoop::seesBlockingCalls()
{
    StallMeter meter;
    QTest::qWait(100);
    const qint64 before = meter.blocked();
    QVERIFY2(before < LongestStall, qPrintable(QString::number(before)));
    QThread::msleep(2 * LongestStall + meter.machine());
    QTest::qWait(20);
    QVERIFY2(meter.blocked() > LongestStall, qPrintable(QString::number(meter.blocked())));
    QVERIFY(meter.stall() >= 2 * LongestStall);
}

/// Every reply takes five seconds, from the server check through the sign-in to the running companion.
void TestEventLoop::neverStallsOnASlowServer()
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
    const StallMeter meter;
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
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.serviceNote(u"pid"_s).isEmpty(), 5000);
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(fixture.loginShows(), 5000);
    QElapsedTimer quitting;
    quitting.start();
    delegate.terminate();
    QTRY_COMPARE(fixture.ended, 1);
    QVERIFY2(quitting.elapsed() < 1000, qPrintable(QString::number(quitting.elapsed())));
    platform::log(u"longest stall %1 ms, of the machine %2 ms; longest sleep outside the event loop %3 ms; %4 beats"_s
                      .arg(meter.stall())
                      .arg(meter.machine())
                      .arg(meter.blocked())
                      .arg(meter.beatCount()));
    QVERIFY2(meter.blocked() <= LongestStall, qPrintable(QString::number(meter.blocked())));
    QVERIFY2(meter.stall() <= LongestStall + meter.machine(), qPrintable(QString::number(meter.stall())));
}

REGISTER_TEST(TestEventLoop)
#include "TestEventLoop.moc"
