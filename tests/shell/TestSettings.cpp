#include "DelegateFixture.h"

#include "shell/QBChangePasswordButton.h"
#include "shell/SettingTexts.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QProgressBar>
#include <QTest>

#include <csignal>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
QJsonObject object(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}
} // namespace

/// The settings window and what it makes of the server's replies.
class TestSettings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void roles_data();
    void roles();
    void quota_data();
    void quota();
    void registration_data();
    void registration();
    void panes();
    void clearCache();
    void changePassword_data();
    void changePassword();
    void signedOut();
};

void TestSettings::roles_data()
{
    QTest::addColumn<QByteArray>("user");
    QTest::addColumn<QString>("roles");
    QTest::addColumn<QString>("departments");
    QTest::addColumn<QString>("mail");
    QTest::newRow("nothing") << QByteArray("{}") << u"普通用户"_s << QString() << u"--"_s;
    QTest::newRow("one known role") << QByteArray(
                                           R"({"roleinfos":[{"id":"7dcfcc9c-ad02-11e8-aa06-000c29358ad6","name":"x"}],
            "directdepinfos":[{"name":"R&D"}],"mail":""})")
                                    << u"超级管理员,普通用户"_s << u"R&D"_s << u"--"_s;
    QTest::newRow("several, in the server's order")
        << QByteArray(R"({"roleinfos":[{"id":"01a78ac2-ad04-11e8-aa06-000c29358ad6"},{"id":"own","name":"Own"},
            {"id":"d2bd2082-ad03-11e8-aa06-000c29358ad6"}],"directdepinfos":[{"name":"a"},{"name":"b"}],"mail":"m@x"})")
        << u"定密审核员,Own,系统管理员,普通用户"_s << u"a,b"_s << u"m@x"_s;
    QTest::newRow("wrong shapes") << QByteArray(R"({"roleinfos":"x","directdepinfos":7,"mail":{}})") << u"普通用户"_s
                                  << QString() << u"--"_s;
}

void TestSettings::roles()
{
    QFETCH(QByteArray, user);
    const QJsonObject reply = object(user.constData());
    QTEST(SettingTexts::roles(reply), "roles");
    QTEST(SettingTexts::departments(reply), "departments");
    QTEST(SettingTexts::mail(reply), "mail");
}

void TestSettings::quota_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("percent");
    const QString nothing = u"已使用0.00G/共0.00G"_s;
    QTest::newRow("no list") << QByteArray("{}") << nothing << 0.0;
    QTest::newRow("total of zero") << QByteArray(R"({"quotainfos":[{"quota":0,"used":99999999999}]})") << nothing
                                   << 0.0;
    QTest::newRow("sum of two") << QByteArray(
                                       R"({"quotainfos":[{"quota":5368709120,"used":1073741824},
            {"quota":5368709120,"used":268435456}]})")
                                << u"已使用1.25G/共10.00G"_s << 12.5;
    QTest::newRow("more than all") << QByteArray(R"({"quotainfos":[{"quota":1073741824,"used":2147483648}]})")
                                   << u"已使用2.00G/共1.00G"_s << 100.0;
    QTest::newRow("wrong shapes") << QByteArray(R"({"quotainfos":[7,{"quota":"much"}]})") << nothing << 0.0;
}

void TestSettings::quota()
{
    QFETCH(QByteArray, reply);
    const SettingTexts::Quota quota = SettingTexts::quota(object(reply.constData()));
    QTEST(quota.text, "text");
    QTEST(quota.percent, "percent");
    QCOMPARE(SettingTexts::quota(std::nullopt).percent, 0.0);
}

void TestSettings::registration_data()
{
    QTest::addColumn<QStringList>("languages");
    QTest::addColumn<bool>("shown");
    QTest::newRow("simplified") << QStringList{u"zh-Hans-CN"_s} << true;
    QTest::newRow("traditional first") << QStringList{u"zh-Hant-TW"_s, u"en-US"_s} << true;
    QTest::newRow("Chinese second") << QStringList{u"en-US"_s, u"zh-Hans-CN"_s} << false;
    QTest::newRow("none") << QStringList() << false;
}

void TestSettings::registration()
{
    QFETCH(QStringList, languages);
    QFETCH(bool, shown);
    ShellFixture fixture;
    QBClearCacheInformation cache(fixture.folder.filePath(u"cache.plist"_s));
    SettingWindowsController settings({}, fixture.networking, cache, fixture.host.workspace, fixture.files.bundle(),
                                      Branding(), languages);
    settings.showGeneralPane();
    settings.buttonClicked(u"btnAbout"_s);
    auto *link = settings.window()->findChild<QAbstractButton *>(u"rightButton"_s);
    QCOMPARE(link->isVisible(), shown);
    link->click();
    QCOMPARE(fixture.host.workspace.opened.size(), 1);
    QVERIFY(fixture.host.workspace.opened.first().scheme() == u"https"_s);
}

void TestSettings::panes()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    delegate.showQuillboxVolume();
    QTRY_VERIFY(!fixture.serviceNote(u"pid"_s).isEmpty());
    delegate.showPreferenceWindow();
    QWidget *window = DelegateFixture::visibleWindow(u"SettingWindowsController"_s);
    QVERIFY(window);
    const auto control = [&](const QString &name) { return window->findChild<QWidget *>(name); };
    const auto label = [&](const QString &name) { return window->findChild<QLabel *>(name)->text(); };
    const QStringList panes{u"General"_s, u"Account"_s, u"About"_s, u"General"_s};
    for (const QString &pane : panes) {
        window->findChild<QAbstractButton *>(u"btn"_s + pane)->click();
        for (const QString &other : panes)
            QCOMPARE(control(u"view"_s + other)->isVisible(), other == pane);
        QVERIFY(window->findChild<QAbstractButton *>(u"btn"_s + pane)->isChecked());
        QTRY_COMPARE(control(u"viewCustom"_s)->size(), control(u"view"_s + pane)->size());
        QTRY_COMPARE(window->height(), window->sizeHint().height());
    }
    QTRY_COMPARE(label(u"txtAccount"_s), demoName());
    QVERIFY(!label(u"txtName"_s).isEmpty());
    QVERIFY(label(u"txtRoletypes"_s).endsWith(u"普通用户"_s));
    QTRY_VERIFY(label(u"txtQuota"_s).startsWith(u"已使用"_s));
    // Opened anew it begins with its first pane; without a service its place is taken by the sign-in window.
    window->findChild<QAbstractButton *>(u"btnAbout"_s)->click();
    delegate.showPreferenceWindow();
    QVERIFY(control(u"viewGeneral"_s)->isVisible());
    ::kill(fixture.serviceNote(u"pid"_s).toInt(), SIGKILL);
    QTRY_VERIFY(fixture.loginShows());
    QVERIFY(!DelegateFixture::visibleWindow(u"SettingWindowsController"_s));
}

void TestSettings::clearCache()
{
    DelegateFixture fixture;
    fixture.signIn(1);
    const QString user = fixture.networking.userID();
    SettingWindowsController settings({}, fixture.networking, fixture.clearCache, fixture.host.workspace,
                                      fixture.files.bundle());
    settings.showGeneralPane();
    auto *box = settings.window()->findChild<QAbstractButton *>(u"btnCheckClearCache"_s);
    QVERIFY(!box->isChecked());
    fixture.clearCache.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(true, user);
    settings.buttonClicked(u"btnGeneral"_s);
    QVERIFY(box->isChecked());
    box->click();
    QVERIFY(!fixture.clearCache.clearCacheSettingWindowFlag(user));
    QVERIFY(fixture.clearCache.clearCacheAlertFlag(user));
    box->click();
    QVERIFY(fixture.clearCache.clearCacheSettingWindowFlag(user));
    QVERIFY(!fixture.clearCache.clearCacheAlertFlag(user));
}

void TestSettings::changePassword_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("the administrator's") << u"1"_s << QStringList{u"close"_s, u"alert"_s};
    QTest::newRow("the user's") << u"0"_s << QStringList{u"close"_s, u"show"_s};
    QTest::newRow("not told") << QString() << QStringList{u"close"_s, u"show"_s};
}

void TestSettings::changePassword()
{
    QFETCH(QString, control);
    DelegateFixture fixture;
    QStringList calls;
    SettingWindowsController settings({.close = [&] { calls.append(u"close"_s); },
                                       .show = [&] { calls.append(u"show"_s); },
                                       .present =
                                           [&](const QBAlert::Alert &alert, auto) {
                                               calls.append(u"alert"_s);
                                               QCOMPARE(alert->text(), u"pwdcontrolInfo"_s);
                                               QCOMPARE(alert->buttons().size(), 1);
                                           }},
                                      fixture.networking, fixture.clearCache, fixture.host.workspace,
                                      fixture.files.bundle());
    auto *button = settings.window()->findChild<QBChangePasswordButton *>(u"btnChangePassword"_s);
    QVERIFY(!button->isEnabled());
    button->dicUserInfo = QJsonObject{{u"pwdcontrol"_s, control.isNull() ? QJsonValue() : control.toInt()}};
    settings.changePassowrds();
    QTEST(calls, "calls");
}

void TestSettings::signedOut()
{
    DelegateFixture fixture;
    fixture.useServer();
    fixture.delegate().showPreferenceWindow();
    QTRY_VERIFY(fixture.loginShows());
    QVERIFY(!DelegateFixture::visibleWindow(u"SettingWindowsController"_s));
}

REGISTER_TEST(TestSettings)
#include "TestSettings.moc"
