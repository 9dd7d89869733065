#include "BrowserScene.h"
#include "WebProcesses.h"
#include "support/TestMain.h"

#include <QApplication>
#include <QProcess>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Failure = platform::WebBrowser::Failure;

/// What the embedded browser costs, and what it leaves behind.
class TestWebProcesses : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(WebProcesses::all(), QSet<qint64>());
        const BrowserScene first; // no page yet
        resting = WebProcesses::all();
        // Only an ordinary user's sandbox needs helpers that stay.
        QVERIFY(geteuid() != 0 || resting.isEmpty());
    }

    void notLinked()
    {
        const auto libraries = [](const QString &file) {
            QProcess process;
            process.start(u"ldd"_s, {QStringLiteral(BUNDLE_FOLDER "/Contents/") + file});
            return process.waitForFinished() ? QString::fromLocal8Bit(process.readAllStandardOutput()) : QString();
        };
        const QString program = libraries(u"MacOS/Quillbox"_s);
        QVERIFY(program.contains(u"libQt6Widgets"_s));
        for (const QString &library : {u"WebEngine"_s, u"libQt6Quick"_s, u"libQt6Qml"_s})
            QVERIFY2(!program.contains(library), qPrintable(library));
        QVERIFY(libraries(u"PlugIns/QuillboxWeb.so"_s).contains(u"libQt6WebEngineCore"_s));
    }

    void crash()
    {
        BrowserScene scene;
        QVERIFY(scene.open(u"/plain"_s));
        const QSet<qint64> pages = WebProcesses::all() - resting;
        QVERIFY(!pages.isEmpty());
        for (const qint64 page : pages)
            kill(static_cast<pid_t>(page), SIGKILL);
        QTRY_COMPARE(scene.failures, QList<Failure>{Failure::Crash});
        QCOMPARE(scene.value(u"1"_s), QString()); // the dead answer nothing, but the question ends
    }

    void closing()
    {
        qsizetype objects = 0;
        for (int round = 0; round < 50; ++round) {
            auto scene = std::make_unique<BrowserScene>();
            switch (round % 5) {
            case 0:
                break; // closed before there is a page
            case 1:
                scene->load(u"/hang"_s);
                break;
            case 2:
                scene->load(u"/spin"_s);
                QVERIFY(QTest::qWaitFor([&] { return !scene->seen.isEmpty(); }, 15'000));
                break;
            default:
                QVERIFY(scene->open(u"/parts"_s));
            }
            scene.reset();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            const qsizetype now = qApp->findChildren<QObject *>().size() + QApplication::allWidgets().size();
            if (round == 4)
                objects = now;
            QVERIFY2(round < 5 || now <= objects, qPrintable(u"round %1: %2 of %3"_s.arg(round).arg(now).arg(objects)));
        }
        QTRY_COMPARE_WITH_TIMEOUT(WebProcesses::all() - resting, QSet<qint64>(), 5000);
    }

private:
    /// What the engine keeps for its next page while nothing is shown.
    QSet<qint64> resting;
};

REGISTER_TEST(TestWebProcesses)
#include "TestWebProcesses.moc"
