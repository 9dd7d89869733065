#include "DelegateFixture.h"

#include "platform/PropertyList.h"
#include "state/NotificationNames.h"
#include "support/Cases.h"
#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QTest>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
QJsonObject failing(const QString &call, const QJsonValue &how)
{
    return {{u"fail"_s, QJsonObject{{call, how}}}};
}

const QJsonObject Agreement{
    {u"oem"_s, QJsonObject{{u"autoPopUserAgreement"_s, true}, {u"agreementText"_s, u"<b>terms</b>"_s}}}};

struct FirstWindow {
    const char *name;
    QJsonObject scenario;
    bool down;
    bool login;
};
const QList<FirstWindow> FirstWindows{
    {"all well", {}, false, true},
    {"server down", {}, true, false},
    {"version check: no packages", failing(u"update.check"_s, 400003), false, true},
    {"version check: not JSON", failing(u"update.check"_s, QJsonObject{{u"raw"_s, u"<html>"_s}}), false, false}};

struct SignIn {
    const char *name;
    QJsonObject scenario;
    bool agreed;
    bool shows;
};
const QList<SignIn> SignIns{{"terms wanted", Agreement, false, true},
                            {"terms agreed to before", Agreement, true, false},
                            {"configuration fails", failing(u"config.getoemconfigbysection"_s, 500001), false, false}};

struct Entries {
    const char *name;
    QString version;
    QStringList added;
};
const QList<Entries> RunTimeEntries{
    {"first server with favourites", u"6.0.1"_s, {u"openMyFavorites"_s, u"changePassword"_s}},
    {"older server", u"5"_s, {u"changePassword"_s}}};

struct LateAnswer {
    const char *name;
    void (AppDelegate::*asks)();
    QString lastCall;
};
const QList<LateAnswer> LateAnswers{{"menu entries", &AppDelegate::addChangePasswordMenuItem, u"auth1.getconfig"_s},
                                    {"terms", &AppDelegate::handleLoginStatusDidChanged, u"user.get"_s},
                                    {"web client", &AppDelegate::showQuillboxWeb, u"auth1.getconfig"_s},
                                    {"change of the password", &AppDelegate::changePassword, u"user.get"_s}};
} // namespace

/// The controller's whole road with real windows: start, sign-in, service, sign-out.
class TestAppDelegate : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void startUpOrder();
    void firstWindow_data() { addCases(FirstWindows); }
    void firstWindow();
    void loginSuccess_data() { addCases(SignIns); }
    void loginSuccess();
    void serviceEndSignsOut();
    void signOutWhileServiceRuns();
    void performLogout_data();
    void performLogout();
    void runTimeEntries_data() { addCases(RunTimeEntries); }
    void runTimeEntries();
    void lateAnswersDoNothing_data() { addCases(LateAnswers); }
    void lateAnswersDoNothing();
    void validators();
    void flips();
};

void TestAppDelegate::startUpOrder()
{
    DelegateFixture fixture;
    const QString log = fixture.folder.filePath(u"order"_s);
    const auto steps = [&] { return contentOf(log).simplified().split(' '); };
    const auto note = [&](const QByteArray &step) { return "#!/bin/sh\necho " + step + " >> " + log.toUtf8() + '\n'; };
    fixture.host.scripts.extension = fixture.files.resource(u"pluginkit"_s);
    QVERIFY(writeFile(fixture.host.scripts.extension, note("registered"), 0700));
    fixture.files.addResource(u"QBOEM.plist"_s, platform::PropertyList::serialize(QVariantMap()));
    fixture.files.addResource(u"installFonts.sh"_s, note("fonts"));
    fixture.files.addResource(
        u"checkFuse.sh"_s, note("driver") + "echo com.github.osxfuse.pkg.Core\necho com.github.osxfuse.pkg.PrefPane");
    fixture.host.workspace.running = {{u"com.velto.FUSEService"_s, 4711}};
    *fixture.fontThere = false;
    fixture.delegate().applicationDidFinishLaunching();
    QTRY_VERIFY(steps().contains("fonts") &&
                steps().contains("driver")); // a look that changes nothing, so in any order
    QVERIFY(steps().indexOf("registered") < steps().indexOf("fonts"));
    QCOMPARE(fixture.host.workspace.terminated.size(), 1);
    QTest::qWait(50);
    QVERIFY(fixture.host.distributed.observed.isEmpty());
    QVERIFY(!fixture.serverWindowShows());

    // The menu can be reached while the start waits, and ends the application.
    fixture.host.launchEvents.handlers.reopen();
    QWidget *menuWindow = DelegateFixture::visibleWindow(u"menuWindow"_s);
    QVERIFY(menuWindow);
    QVERIFY(!menuWindow->findChild<QAbstractButton *>(u"performLogout"_s)->isEnabled());

    *fixture.fontThere = true;
    QTRY_VERIFY(fixture.serverWindowShows());
    QCOMPARE(steps().size(), 3);
    QCOMPARE(fixture.host.distributed.observed, QStringList{u"NotificationRegisterServerSucess"_s});
    menuWindow->findChild<QAbstractButton *>(u"performQuitApp"_s)->click();
    QTRY_COMPARE(fixture.ended, 1);
}

void TestAppDelegate::firstWindow()
{
    const auto &[name, scenario, down, login] = currentCase(FirstWindows);
    DelegateFixture fixture;
    fixture.useServer(scenario);
    if (down)
        fixture.server->server->stop();
    fixture.delegate().applicationDidFinishLaunching();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.loginShows(), login, 10000);
    QTRY_COMPARE(fixture.serverWindowShows(), !login);
    QCOMPARE(fixture.server->server->calls().contains(u"update.check"_s), !down);
    QVERIFY(fixture.alerts.texts.isEmpty());
}

void TestAppDelegate::loginSuccess()
{
    const auto &[name, scenario, agreed, shows] = currentCase(SignIns);
    DelegateFixture fixture;
    fixture.useServer(scenario);
    fixture.addLastingService();
    fixture.signInAtServer();
    if (agreed)
        fixture.networking.agreedToTermsOfUse(nullptr);
    fixture.delegate().addObservers();
    fixture.delegate().showLoginWindowAllowAutoLogin(false);
    QTRY_VERIFY(fixture.loginShows());
    fixture.postLoginSuccess();
    QVERIFY(!fixture.loginShows());
    if (shows) {
        QTRY_VERIFY(DelegateFixture::visibleWindow(u"UserProtocolWindowController"_s));
        QVERIFY(!fixture.delegate().serviceRunning());
        fixture.center.post(NotificationNames::userProtocolShowVolume());
        QVERIFY(!DelegateFixture::visibleWindow(u"UserProtocolWindowController"_s));
    }
    QTRY_VERIFY(fixture.delegate().serviceRunning());
    QTRY_COMPARE(fixture.serviceNote(u"arguments"_s).trimmed(), QByteArray::number(qApp->applicationPid()));
    QVERIFY(fixture.delegate().isWatchingService());
}

void TestAppDelegate::serviceEndSignsOut()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    const QStringList usual = fixture.entries();
    delegate.userProtocolShowVolume();
    QTRY_COMPARE(fixture.entries().mid(7, 2), (QStringList{u"openMyFavorites"_s, u"changePassword"_s}));
    QVERIFY(!fixture.loginShows());
    fixture.killService();
    QTRY_VERIFY(fixture.loginShows());
    QVERIFY(!delegate.isWatchingService());
    QCOMPARE(fixture.host.sidebar.removed, QStringList{u"Quillbox"_s});
    QCOMPARE(fixture.entries(), usual);
    // The session is over, here and at the server.
    QTRY_VERIFY(!fixture.globe.isLogin());
    QVERIFY(fixture.server->server->calls().contains(u"auth1.logout"_s));

    // The next sign-in starts it again and resumes the watch.
    delegate.showQuillboxVolume();
    QVERIFY(delegate.serviceRunning());
    QVERIFY(delegate.isWatchingService());
    fixture.killService();
    QTRY_COMPARE(fixture.host.sidebar.removed.size(), 2);
}

void TestAppDelegate::signOutWhileServiceRuns()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    fixture.delegate().showQuillboxVolume();
    fixture.delegate().logoutOnManager();
    QTRY_VERIFY(fixture.loginShows());
    QVERIFY(fixture.server->server->calls().contains(u"auth1.logout"_s));
    QVERIFY(!fixture.globe.isLogin());
}

void TestAppDelegate::performLogout_data()
{
    QTest::addColumn<bool>("kept");
    QTest::newRow("volume free") << false;
    QTest::newRow("open files kept") << true;
}

void TestAppDelegate::performLogout()
{
    QFETCH(bool, kept);
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    fixture.host.volumes.mounted = {fixture.volume()};
    if (kept)
        fixture.host.volumes.busy = fixture.host.volumes.mounted;
    fixture.delegate().showQuillboxVolume();
    LogRecorder log;
    fixture.delegate().performLogout();
    if (kept) {
        QTRY_VERIFY(log.contains(u"取消注销"_s));
        QTest::qWait(400);
        QVERIFY(fixture.delegate().serviceRunning());
        QVERIFY(fixture.posted().isEmpty());
        return;
    }
    QTRY_COMPARE(fixture.posted(), QStringList{u"NotificationStopQuillboxFuseService"_s});
    QTRY_VERIFY(!fixture.delegate().serviceRunning()); // this one ignores the notification
    QTRY_VERIFY(fixture.loginShows());
}

void TestAppDelegate::runTimeEntries()
{
    const auto &[name, version, added] = currentCase(RunTimeEntries);
    DelegateFixture fixture;
    fixture.useServer({{u"server_version"_s, version}});
    fixture.signInAtServer();
    const QStringList before = fixture.entries();
    for (int round = 0; round < 2; ++round) {
        fixture.delegate().addChangePasswordMenuItem();
        QTRY_COMPARE(fixture.entries().mid(7, added.size()), added);
        QTest::qWait(50);
        QCOMPARE(fixture.entries().size(), before.size() + added.size());
    }
}

/// The companion ended while the server was still asked: whoever signs in next starts anew.
void TestAppDelegate::lateAnswersDoNothing()
{
    const auto &[name, asks, lastCall] = currentCase(LateAnswers);
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    const QStringList before = fixture.entries();
    QVERIFY(fixture.server->useScenario({{u"delay_ms"_s, 150}}));
    (delegate.*asks)();
    QTRY_VERIFY(!fixture.server->server->calls().isEmpty());
    delegate.logoutOnManager();
    QTRY_VERIFY(fixture.server->server->calls().contains(lastCall));
    QTest::qWait(800); // longer than all that is asked together
    QCOMPARE(fixture.entries(), before);
    QVERIFY(!delegate.serviceRunning());
    QVERIFY(fixture.loginShows());
    QVERIFY(fixture.host.workspace.openedInSecret.isEmpty() && fixture.alerts.texts.isEmpty());
    QVERIFY(!DelegateFixture::visibleWindow(u"QBChangePasswordController"_s));
}

void TestAppDelegate::validators()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    for (const bool running : {false, true}) {
        if (running)
            fixture.delegate().showQuillboxVolume();
        for (int tag = 0; tag <= 8; ++tag)
            QCOMPARE(fixture.delegate().validateUserInterfaceItem(tag), running || tag == 0 || tag == 4 || tag == 8);
    }
}

void TestAppDelegate::flips()
{
    DelegateFixture fixture;
    fixture.useServer();
    fixture.delegate().addObservers();
    fixture.delegate().showLoginWindowAllowAutoLogin(false);
    QTRY_VERIFY(fixture.loginShows());
    fixture.center.post(NotificationNames::wantServerSettingWindow());
    QTRY_VERIFY(fixture.serverWindowShows() && !fixture.loginShows());
    fixture.center.post(NotificationNames::wantLoginWindow());
    QTRY_VERIFY(!fixture.serverWindowShows() && fixture.loginShows());
    // Windows that this build does not have leave the sign-in window where it is.
    LogRecorder log;
    fixture.center.post(NotificationNames::wantLoginVerifyWindow());
    fixture.center.post(NotificationNames::wantForgetPWDWindow());
    QCOMPARE(log.lines().size(), 2);
    fixture.center.post(NotificationNames::closeThirdLoginWindowShowLoginWindow());
    QVERIFY(fixture.loginShows());
}

REGISTER_TEST(TestAppDelegate)
#include "TestAppDelegate.moc"
