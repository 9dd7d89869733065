#include "DelegateFixture.h"

#include "platform/PropertyList.h"
#include "state/NotificationNames.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QFile>
#include <QPlainTextEdit>
#include <QTest>

#include <csignal>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
const QJsonObject Agreement{
    {u"oem"_s, QJsonObject{{u"autoPopUserAgreement"_s, true}, {u"agreementText"_s, u"<b>terms</b>"_s}}}};
} // namespace

/// The controller's whole road with real windows: start, sign-in, service, sign-out, end.
class TestAppDelegate : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void startUpOrder();
    void firstWindow_data();
    void firstWindow();
    void loginSuccess_data();
    void loginSuccess();
    void serviceEndSignsOut();
    void missingServiceKeepsTheUserSignedIn();
    void signOutWhileServiceRuns();
    void performLogout_data();
    void performLogout();
    void runTimeEntries_data();
    void runTimeEntries();
    void lateAnswerAddsNothing();
    void lateAgreementOpensNothing();
    void validators();
    void flips();
};

void TestAppDelegate::startUpOrder()
{
    DelegateFixture fixture;
    const QByteArray log = fixture.folder.filePath(u"order"_s).toUtf8();
    const auto steps = [&] {
        QFile file(QString::fromUtf8(log));
        return file.open(QIODevice::ReadOnly) ? file.readAll().simplified().split(' ') : QList<QByteArray>();
    };
    fixture.files.addResource(u"pluginkit"_s, "#!/bin/sh\necho registered >> " + log);
    QFile::setPermissions(fixture.files.resource(u"pluginkit"_s), QFile::ReadOwner | QFile::ExeOwner);
    fixture.host.scripts.extension = fixture.files.resource(u"pluginkit"_s);
    fixture.files.addResource(u"QBOEM.plist"_s, platform::PropertyList::serialize(QVariantMap()));
    fixture.files.addResource(u"installFonts.sh"_s, "echo fonts >> " + log);
    fixture.files.addResource(u"checkFuse.sh"_s,
                              "echo driver >> " + log +
                                  "\necho com.github.osxfuse.pkg.Core\necho com.github.osxfuse.pkg.PrefPane");
    fixture.host.workspace.running = {{u"com.velto.FUSEService"_s, 4711}};
    *fixture.fontThere = false;
    AppDelegate &delegate = fixture.delegate();
    delegate.applicationDidFinishLaunching();
    QTRY_VERIFY(steps().contains("fonts") && steps().contains("driver")); // a look that changes nothing, so in any order
    QVERIFY(steps().indexOf("registered") < steps().indexOf("fonts"));
    QCOMPARE(fixture.host.workspace.terminated.size(), 1);
    QTest::qWait(50);
    QVERIFY(fixture.host.distributed.observed.isEmpty());
    QVERIFY(!fixture.serverWindowShows());

    // The menu can be reached while the start waits, and ends the application.
    fixture.host.launchEvents.handlers.reopen();
    QWidget *menuWindow = DelegateFixture::visibleWindow(u"menuWindow"_s);
    QVERIFY(menuWindow);
    QVERIFY(menuWindow->findChild<QAbstractButton *>(u"performQuitApp"_s)->isEnabled());
    QVERIFY(!menuWindow->findChild<QAbstractButton *>(u"performLogout"_s)->isEnabled());

    *fixture.fontThere = true;
    QTRY_VERIFY(fixture.serverWindowShows());
    QCOMPARE(steps().size(), 3);
    QCOMPARE(fixture.host.distributed.observed, QStringList{u"NotificationRegisterServerSucess"_s});
    menuWindow->findChild<QAbstractButton *>(u"performQuitApp"_s)->click();
    QTRY_COMPARE(fixture.ended, 1);
}

void TestAppDelegate::firstWindow_data()
{
    QTest::addColumn<QJsonObject>("scenario");
    QTest::addColumn<bool>("down");
    QTest::addColumn<bool>("login");
    const auto failing = [](const QString &call, const QJsonValue &how) {
        return QJsonObject{{u"fail"_s, QJsonObject{{call, how}}}};
    };
    QTest::newRow("all well") << QJsonObject() << false << true;
    QTest::newRow("server down") << QJsonObject() << true << false;
    QTest::newRow("version check: no packages") << failing(u"update.check"_s, 400003) << false << true;
    QTest::newRow("version check: illegal") << failing(u"update.check"_s, 400002) << false << false;
    QTest::newRow("version check: server error") << failing(u"update.check"_s, 500001) << false << false;
    QTest::newRow("version check: not JSON")
        << failing(u"update.check"_s, QJsonObject{{u"raw"_s, u"<html>"_s}}) << false << false;
}

void TestAppDelegate::firstWindow()
{
    QFETCH(QJsonObject, scenario);
    QFETCH(bool, down);
    QFETCH(bool, login);
    DelegateFixture fixture;
    fixture.useServer(scenario);
    if (down)
        fixture.server->server->stop();
    fixture.delegate().applicationDidFinishLaunching();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.loginShows(), login, 10000);
    QTRY_COMPARE(fixture.serverWindowShows(), !login);
    if (!down)
        QVERIFY(fixture.server->server->calls().contains(u"update.check"_s));
    QVERIFY(fixture.alerts.texts.isEmpty());
}

void TestAppDelegate::loginSuccess_data()
{
    QTest::addColumn<QJsonObject>("scenario");
    QTest::addColumn<bool>("agreed");
    QTest::addColumn<bool>("shows");
    QTest::newRow("none wanted") << QJsonObject() << false << false;
    QTest::newRow("wanted") << Agreement << false << true;
    QTest::newRow("wanted, agreed before") << Agreement << true << false;
    QTest::newRow("configuration fails") << QJsonObject{{u"fail"_s,
                                                         QJsonObject{{u"config.getoemconfigbysection"_s, 500001}}}}
                                         << false << false;
}

void TestAppDelegate::loginSuccess()
{
    QFETCH(QJsonObject, scenario);
    QFETCH(bool, agreed);
    QFETCH(bool, shows);
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
        QWidget *dialog = DelegateFixture::visibleWindow(u"UserProtocolWindowController"_s);
        auto *open = dialog->findChild<QAbstractButton *>(u"btnShowVolume"_s);
        QCOMPARE(dialog->findChild<QPlainTextEdit *>(u"txtViewUserProtocol"_s)->toPlainText(), u"<b>terms</b>"_s);
        dialog->close();
        QVERIFY(dialog->isVisible());
        QVERIFY(!open->isEnabled());
        QVERIFY(!fixture.delegate().serviceRunning());
        dialog->findChild<QAbstractButton *>(u"btnReadUserProtocol"_s)->click();
        open->click();
        QTRY_VERIFY(!DelegateFixture::visibleWindow(u"UserProtocolWindowController"_s));
    }
    QTRY_VERIFY(fixture.delegate().serviceRunning());
    QTRY_COMPARE(fixture.serviceNote(u"arguments"_s), QByteArray::number(QCoreApplication::applicationPid()));
    QVERIFY(fixture.delegate().isWatchingService());
    if (shows)
        QTRY_VERIFY(fixture.server->server->calls().contains(u"user.agreedtotermsofuse"_s));
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
}

void TestAppDelegate::serviceEndSignsOut()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    const auto entries = [&] { return DelegateFixture::allEntries(delegate); };
    const QStringList usual = entries();
    delegate.userProtocolShowVolume();
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    QTRY_COMPARE(entries().mid(7, 2), (QStringList{u"openMyFavorites"_s, u"changePassword"_s}));
    QVERIFY(DelegateFixture::visibleEntries(delegate).contains(u"changePassword"_s));
    QVERIFY(DelegateFixture::visibleEntries(delegate).contains(u"performLogout"_s));
    QVERIFY(!fixture.loginShows());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
    QTRY_VERIFY(fixture.loginShows());
    QVERIFY(!delegate.isWatchingService());
    QCOMPARE(fixture.host.sidebar.removed, QStringList{u"Quillbox"_s});
    QVERIFY(!DelegateFixture::visibleEntries(delegate).contains(u"performLogout"_s));
    QCOMPARE(entries(), usual);
    QVERIFY(!fixture.server->server->calls().contains(u"auth1.logout"_s));

    // The next sign-in starts it again and resumes the watch.
    fixture.forgetServiceNotes();
    delegate.showQuillboxVolume();
    QVERIFY(delegate.serviceRunning());
    QVERIFY(delegate.isWatchingService());
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
    QTRY_COMPARE(fixture.host.sidebar.removed.size(), 2);
}

void TestAppDelegate::missingServiceKeepsTheUserSignedIn()
{
    DelegateFixture fixture;
    fixture.signInAtServer();
    LogRecorder log;
    fixture.delegate().showQuillboxVolume();
    QVERIFY(log.contains(u"ERROR: can't find FUSEService!"_s));
    QTest::qWait(120);
    QVERIFY(!fixture.delegate().isWatchingService());
    QVERIFY(!fixture.loginShows());
    QVERIFY(fixture.globe.isLogin());
    QVERIFY(!fixture.server->server->calls().contains(u"config.get"_s));
}

void TestAppDelegate::signOutWhileServiceRuns()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    fixture.delegate().showQuillboxVolume();
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    fixture.delegate().logoutOnManager();
    QTRY_VERIFY(fixture.loginShows());
    QVERIFY(fixture.server->server->calls().contains(u"auth1.logout"_s));
    QVERIFY(!fixture.globe.isLogin());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
}

void TestAppDelegate::performLogout_data()
{
    QTest::addColumn<bool>("busy");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("stops");
    QTest::newRow("volume free") << false << 0 << true;
    QTest::newRow("files open, forced") << true << 1000 << true;
    QTest::newRow("files open, kept") << true << 1001 << false;
}

void TestAppDelegate::performLogout()
{
    QFETCH(bool, busy);
    QFETCH(int, code);
    QFETCH(bool, stops);
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    fixture.host.volumes.mounted = {fixture.volume()};
    if (busy)
        fixture.host.volumes.busy = fixture.host.volumes.mounted;
    fixture.alerts.codes = {code};
    fixture.delegate().showQuillboxVolume();
    LogRecorder log;
    fixture.delegate().performLogout();
    const auto answered = [&] {
        return stops ? fixture.posted() == QStringList{u"NotificationStopQuillboxFuseService"_s}
                     : log.contains(u"取消注销"_s);
    };
    QTRY_VERIFY(answered());
    QCOMPARE(fixture.posted().size(), int(stops));
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    if (stops) { // this one ignores the notification
        QTRY_VERIFY(!fixture.delegate().serviceRunning());
        QTRY_VERIFY(fixture.delegate().loginFlow().loginWindow());
        return;
    }
    QTest::qWait(400);
    QVERIFY(fixture.delegate().serviceRunning());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
}

void TestAppDelegate::runTimeEntries_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QStringList>("added");
    QTest::newRow("current server") << u"7"_s << QStringList{u"openMyFavorites"_s, u"changePassword"_s};
    QTest::newRow("first with favourites") << u"6.0.1"_s << QStringList{u"openMyFavorites"_s, u"changePassword"_s};
    QTest::newRow("older server") << u"5"_s << QStringList{u"changePassword"_s};
}

void TestAppDelegate::runTimeEntries()
{
    QFETCH(QString, version);
    QFETCH(QStringList, added);
    DelegateFixture fixture;
    fixture.useServer({{u"server_version"_s, version}});
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    const auto names = [&] { return DelegateFixture::allEntries(delegate); };
    const QStringList before = names();
    for (int round = 0; round < 2; ++round) {
        delegate.addChangePasswordMenuItem();
        QTRY_COMPARE(names().mid(7, added.size()), added);
        QTest::qWait(50);
        QCOMPARE(names().size(), before.size() + added.size());
    }
    delegate.logoutOnManager();
    QCOMPARE(names(), before);
}

void TestAppDelegate::lateAnswerAddsNothing()
{
    DelegateFixture fixture;
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    const qsizetype before = delegate.statusMenu().menu()->actions().size();
    QVERIFY(fixture.server->useScenario({{u"delay_ms"_s, 150}}));
    delegate.addChangePasswordMenuItem();
    delegate.logoutOnManager();
    QTRY_VERIFY(fixture.server->server->calls().contains(u"auth1.getconfig"_s));
    QTest::qWait(400);
    QCOMPARE(delegate.statusMenu().menu()->actions().size(), before);
}

/// The companion ended while the server was still asked about the terms: whoever signs in next starts anew.
void TestAppDelegate::lateAgreementOpensNothing()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    delegate.addObservers();
    QVERIFY(fixture.server->useScenario({{u"delay_ms"_s, 150}}));
    fixture.postLoginSuccess();
    delegate.logoutOnManager();
    QTRY_VERIFY(fixture.server->server->calls().contains(u"user.get"_s)); // the second and last question
    QTest::qWait(400);
    QVERIFY(!delegate.serviceRunning());
    QVERIFY(fixture.loginShows());
}

void TestAppDelegate::validators()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    for (const bool running : {false, true}) {
        if (running)
            delegate.showQuillboxVolume();
        for (int tag = 0; tag <= 8; ++tag)
            QCOMPARE(delegate.validateUserInterfaceItem(tag), running || tag == 0 || tag == 4 || tag == 8);
    }
    QCOMPARE(DelegateFixture::visibleEntries(delegate),
             (QStringList{u"showQuillboxWindow"_s, u"showQuillboxWeb"_s, u"showTransferWindow"_s,
                          u"showDirectUploadPanel"_s, u"showSearchWindow"_s, u"showContentSearchWindow"_s,
                          u"showPreferenceWindow"_s, u"performLogout"_s, u"performQuitApp"_s}));
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
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
    QVERIFY(fixture.loginShows());
    QCOMPARE(log.lines().size(), 2);
    fixture.center.post(NotificationNames::closeThirdLoginWindowShowLoginWindow());
    QVERIFY(fixture.loginShows());
}


REGISTER_TEST(TestAppDelegate)
#include "TestAppDelegate.moc"
