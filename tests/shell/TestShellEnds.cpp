#include "DelegateFixture.h"

#include "login/UserProtocolWindowController.h"
#include "platform/PropertyList.h"
#include "shell/ProcessEnd.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QEventLoop>
#include <QTest>
#include <QTimer>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
struct Reopening {
    const char *name;
    bool signedIn;
    bool window;
    bool startsService;
};
const QList<Reopening> Reopenings{{"signed in, no window", true, false, true},
                                  {"signed in, a window", true, true, false},
                                  {"signed out, no window", false, false, false}};

struct FinderScript {
    const char *name;
    QByteArray script;
    bool works;
};
const QList<FinderScript> FinderScripts{
    {"missing", {}, false}, {"silent", "true", true}, {"prints", "echo trouble", false}};
} // namespace

/// What a user who comes back, leaves or asks for help of the host meets.
class TestShellEnds : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reopen_data() { addCases(Reopenings); }
    void reopen();
    void windowsOfTheSessionCount();
    void quits_data();
    void quits();
    void endsBesideWindowsThatStay();
    void noWebClientWithoutAServer();
    void relaunchFinder_data() { addCases(FinderScripts); }
    void relaunchFinder();
};

void TestShellEnds::reopen()
{
    const auto &[name, signedIn, window, startsService] = currentCase(Reopenings);
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
}

/// The volume opens only when there is nothing else to come back to.
void TestShellEnds::windowsOfTheSessionCount()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    AppDelegate &delegate = fixture.delegate();
    delegate.applicationDidFinishLaunching();
    QTRY_VERIFY(fixture.serverWindowShows());
    delegate.loginFlow().serverSettingWindow()->close();
    fixture.signIn(1);
    delegate.showSearchWindow();
    fixture.host.launchEvents.handlers.reopen();
    QVERIFY(!delegate.serviceRunning());
    DelegateFixture::visibleWindow(u"SearchWindowsController"_s)->close();
    fixture.host.launchEvents.handlers.reopen();
    QVERIFY(delegate.serviceRunning());
}

void TestShellEnds::quits_data()
{
    QTest::addColumn<bool>("asks");
    QTest::newRow("from the menu, files kept") << true;
    QTest::newRow("by the session") << false;
}

void TestShellEnds::quits()
{
    QFETCH(bool, asks);
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
    QTRY_COMPARE(fixture.ended, int(!asks));
    const auto state = platform::PropertyList::readDictionary(fixture.files.resource(u"AppUpdate.plist"_s));
    QCOMPARE(state.value_or(QVariantMap()).value(u"ShownUpdateWindow"_s).toBool(), asks);
    QCOMPARE(fixture.posted().size(), int(!asks));
    QCOMPARE(fixture.host.sidebar.removed.size(), int(!asks));
    delegate.applicationWillTerminate();
    delegate.applicationWillTerminate();
    QCOMPARE(fixture.posted(), QStringList{u"NotificationStopQuillboxFuseService"_s});
}

/// The terms refuse to be closed; that must not keep the application from ending.
void TestShellEnds::endsBesideWindowsThatStay()
{
    DelegateFixture fixture;
    UserProtocolWindowController dialog(fixture.networking, fixture.center);
    dialog.showWindow();
    dialog.window()->close();
    QVERIFY(dialog.isVisible());
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [] { shell::endEventLoop(); });
    QTimer::singleShot(5000, &loop, [&loop] { loop.exit(1); });
    QCOMPARE(loop.exec(), 0);
    QVERIFY(dialog.isVisible());
}

void TestShellEnds::noWebClientWithoutAServer()
{
    DelegateFixture fixture;
    fixture.signInAtServer();
    fixture.server->server->stop();
    fixture.delegate().showQuillboxWeb();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.alerts.texts.size(), 1, 10000);
    QVERIFY(fixture.host.workspace.openedInSecret.isEmpty());
}

void TestShellEnds::relaunchFinder()
{
    const auto &[name, script, works] = currentCase(FinderScripts);
    DelegateFixture fixture;
    if (!script.isNull())
        fixture.files.addResource(u"relanuchFinder.scpt"_s, script);
    std::optional<bool> answer;
    fixture.delegate().relaunchFinder([&](bool worked) { answer = worked; });
    QTRY_COMPARE(answer, std::optional(works));
}

REGISTER_TEST(TestShellEnds)
#include "TestShellEnds.moc"
