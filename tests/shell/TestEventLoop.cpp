#include "DelegateFixture.h"

#include "platform/Log.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>

#include <csignal>
#include <thread>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
constexpr int Beat = 5; // milliseconds
constexpr qint64 LongestStall = 50;

/// Measures how long the main thread stays away from its event loop, beside a thread that does nothing: what holds up
/// both is the machine's load and not ours.
class StallMeter
{
public:
    StallMeter()
        : idle([this] {
              QElapsedTimer since;
              for (since.start(); !ended; since.start()) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(Beat));
                  machineStall = qMax<qint64>(machineStall, since.elapsed());
              }
          })
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] {
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
        idle.join();
    }
    StallMeter(const StallMeter &) = delete;
    StallMeter &operator=(const StallMeter &) = delete;

    qint64 stall() const { return worst; }
    qint64 machine() const { return machineStall; }

private:
    std::atomic<bool> ended = false;
    std::atomic<qint64> machineStall = 0;
    qint64 worst = 0;
    QElapsedTimer sinceBeat;
    QTimer timer;
    std::thread idle;
};
} // namespace

class TestEventLoop : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void neverStallsOnASlowServer();
};

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
    platform::log(u"longest stall %1 ms, of the machine %2 ms"_s.arg(meter.stall()).arg(meter.machine()));
    QVERIFY2(meter.stall() <= LongestStall + meter.machine(), qPrintable(QString::number(meter.stall())));
}

REGISTER_TEST(TestEventLoop)
#include "TestEventLoop.moc"
