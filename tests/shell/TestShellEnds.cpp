#include "DelegateFixture.h"

#include "platform/PropertyList.h"
#include "shell/ProcessEnd.h"
#include "support/TestMain.h"

#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <csignal>

using namespace testing;
using namespace Qt::StringLiterals;

/// What a user who comes back, leaves or asks for help of the host meets.
class TestShellEnds : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reopen_data();
    void reopen();
    void quits_data();
    void quits();
    void endsBesideWindowsThatStay();
    void webClient();
    void relaunchFinder_data();
    void relaunchFinder();
};

void TestShellEnds::reopen_data()
{
    QTest::addColumn<bool>("signedIn");
    QTest::addColumn<bool>("window");
    QTest::addColumn<bool>("startsService");
    QTest::newRow("signed in, no window") << true << false << true;
    QTest::newRow("signed in, a window") << true << true << false;
    QTest::newRow("signed out, no window") << false << false << false;
    QTest::newRow("signed out, a window") << false << true << false;
}

void TestShellEnds::reopen()
{
    QFETCH(bool, signedIn);
    QFETCH(bool, window);
    QFETCH(bool, startsService);
    DelegateFixture fixture;
    fixture.addLastingService();
    AppDelegate &delegate = fixture.delegate();
    delegate.applicationDidFinishLaunching();
    QTRY_VERIFY(fixture.serverWindowShows());
    if (!window)
        delegate.loginFlow().serverSettingWindow()->close();
    if (signedIn)
        fixture.signIn(1);
    QVERIFY(!delegate.serviceRunning());
    fixture.host.launchEvents.handlers.reopen();
    QCOMPARE(delegate.serviceRunning(), startsService);
    QVERIFY(DelegateFixture::visibleWindow(u"menuWindow"_s)); // there is no tray
    if (startsService) {
        QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
        ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
    }
}

void TestShellEnds::quits_data()
{
    QTest::addColumn<bool>("asks");
    QTest::addColumn<bool>("ends");
    QTest::newRow("from the menu, files kept") << true << false;
    QTest::newRow("by the session") << false << true;
}

void TestShellEnds::quits()
{
    QFETCH(bool, asks);
    QFETCH(bool, ends);
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signIn(1);
    fixture.files.addResource(u"AppUpdate.plist"_s,
                              platform::PropertyList::serialize(QVariantMap{{u"ShownUpdateWindow"_s, true}}));
    fixture.host.volumes.mounted = fixture.host.volumes.busy = {fixture.volume()};
    AppDelegate &delegate = fixture.delegate();
    delegate.showQuillboxVolume();
    if (asks)
        delegate.performQuitApp();
    else
        delegate.terminateWithoutAsking();
    QTRY_COMPARE(fixture.host.volumes.unmounted.size(), 1);
    QTRY_COMPARE(fixture.alerts.texts.size(), int(asks));
    QTRY_COMPARE(fixture.ended, int(ends));
    const QVariantMap state =
        platform::PropertyList::readDictionary(fixture.files.resource(u"AppUpdate.plist"_s)).value_or(QVariantMap());
    QCOMPARE(state.value(u"ShownUpdateWindow"_s).toBool(), !ends);
    QCOMPARE(fixture.posted().size(), int(ends));
    QCOMPARE(fixture.host.sidebar.removed.size(), int(ends));
    delegate.applicationWillTerminate();
    delegate.applicationWillTerminate();
    QCOMPARE(fixture.posted(), QStringList{u"NotificationStopQuillboxFuseService"_s});
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
}

/// The terms refuse to be closed; that must not keep the application from ending.
void TestShellEnds::endsBesideWindowsThatStay()
{
    DelegateFixture fixture;
    UserProtocolWindowController dialog(fixture.networking, fixture.center);
    dialog.showWindow();
    QVERIFY((dialog.window()->windowFlags() & Qt::WindowCloseButtonHint) == 0);
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [] { shell::endEventLoop(); });
    QTimer tooLong;
    connect(&tooLong, &QTimer::timeout, &loop, [&loop] { loop.exit(1); });
    tooLong.start(5000);
    QCOMPARE(loop.exec(), 0);
    QVERIFY(tooLong.isActive() && dialog.isVisible());
}

void TestShellEnds::webClient()
{
    DelegateFixture fixture;
    fixture.signInAtServer();
    fixture.delegate().showQuillboxWeb();
    QTRY_COMPARE(fixture.host.workspace.openedInSecret.size(), 1);
    const QUrl url = fixture.host.workspace.openedInSecret.first();
    QCOMPARE(url.path(), u"/login"_s);
    QVERIFY(url.query().contains(fixture.globe.account().tokenID));
    QVERIFY(url.port() > 0);
    fixture.server->server->stop();
    fixture.delegate().showQuillboxWeb();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.alerts.texts.size(), 1, 10000);
    QCOMPARE(fixture.host.workspace.openedInSecret.size(), 1);
    QVERIFY(fixture.host.workspace.opened.isEmpty());
}

void TestShellEnds::relaunchFinder_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<bool>("works");
    QTest::newRow("missing") << QByteArray() << false;
    QTest::newRow("silent") << QByteArray("true") << true;
    QTest::newRow("prints") << QByteArray("echo trouble") << false;
}

void TestShellEnds::relaunchFinder()
{
    QFETCH(QByteArray, script);
    QFETCH(bool, works);
    DelegateFixture fixture;
    if (!script.isNull())
        fixture.files.addResource(u"relanuchFinder.scpt"_s, script);
    std::optional<bool> answer;
    fixture.delegate().relaunchFinder([&](bool worked) { answer = worked; });
    QTRY_COMPARE(answer, std::optional(works));
}

REGISTER_TEST(TestShellEnds)
#include "TestShellEnds.moc"
