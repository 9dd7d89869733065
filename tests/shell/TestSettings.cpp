#include "DelegateFixture.h"

#include "shell/QBChangePasswordButton.h"
#include "shell/SettingTexts.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTest>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
QJsonObject object(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

struct User {
    const char *name;
    QByteArray reply;
    QString roles;
    QString departments;
    QString mail;
};
const QList<User> Users{
    {"nothing", "{}", u"普通用户"_s, {}, u"--"_s},
    {"one known role",
     R"({"roleinfos":[{"id":"7dcfcc9c-ad02-11e8-aa06-000c29358ad6","name":"x"}],
         "directdepinfos":[{"name":"R&D"}],"mail":""})",
     u"超级管理员,普通用户"_s, u"R&D"_s, u"--"_s},
    {"several, in the server's order",
     R"({"roleinfos":[{"id":"01a78ac2-ad04-11e8-aa06-000c29358ad6"},{"id":"own","name":"Own"},
         {"id":"d2bd2082-ad03-11e8-aa06-000c29358ad6"}],"directdepinfos":[{"name":"a"},{"name":"b"}],"mail":"m@x"})",
     u"定密审核员,Own,系统管理员,普通用户"_s, u"a,b"_s, u"m@x"_s},
    {"wrong shapes", R"({"roleinfos":"x","directdepinfos":7,"mail":{}})", u"普通用户"_s, {}, u"--"_s}};

struct Quota {
    const char *name;
    QByteArray reply;
    QString text;
    double percent;
};
const QString NoQuota = u"已使用0.00G/共0.00G"_s;
const QList<Quota> Quotas{
    {"no list", "{}", NoQuota, 0},
    {"total of zero", R"({"quotainfos":[{"quota":0,"used":99999999999}]})", NoQuota, 0},
    {"sum of two", R"({"quotainfos":[{"quota":5368709120,"used":1073741824},{"quota":5368709120,"used":268435456}]})",
     u"已使用1.25G/共10.00G"_s, 12.5},
    {"more than all", R"({"quotainfos":[{"quota":1073741824,"used":2147483648}]})", u"已使用2.00G/共1.00G"_s, 100},
    {"wrong shapes", R"({"quotainfos":[7,{"quota":"much"}]})", NoQuota, 0}};

struct Languages {
    const char *name;
    QStringList preferred;
    bool shown;
};
const QList<Languages> LanguageCases{{"simplified", {u"zh-Hans-CN"_s}, true},
                                     {"traditional first", {u"zh-Hant-TW"_s, u"en-US"_s}, true},
                                     {"Chinese second", {u"en-US"_s, u"zh-Hans-CN"_s}, false},
                                     {"none", {}, false}};

struct Control {
    const char *name;
    QJsonValue value;
    QStringList calls;
};
const QList<Control> Controls{{"the administrator's", 1, {u"close"_s, u"alert"_s}},
                              {"the user's", 0, {u"close"_s, u"show"_s}},
                              {"not told", {}, {u"close"_s, u"show"_s}}};
} // namespace

/// The settings window and what it makes of the server's replies.
class TestSettings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void replies_data() { addCases(Users); }
    void replies();
    void quota_data() { addCases(Quotas); }
    void quota();
    void registration_data() { addCases(LanguageCases); }
    void registration();
    void opensAnewOnItsFirstPane();
    void clearCache();
    void changePassword_data() { addCases(Controls); }
    void changePassword();
};

void TestSettings::replies()
{
    const auto &[name, reply, roles, departments, mail] = currentCase(Users);
    QCOMPARE(SettingTexts::roles(object(reply)), roles);
    QCOMPARE(SettingTexts::departments(object(reply)), departments);
    QCOMPARE(SettingTexts::mail(object(reply)), mail);
}

void TestSettings::quota()
{
    const auto &[name, reply, text, percent] = currentCase(Quotas);
    const SettingTexts::Quota quota = SettingTexts::quota(object(reply));
    QCOMPARE(quota.text, text);
    QCOMPARE(quota.percent, percent);
    QCOMPARE(SettingTexts::quota(std::nullopt).percent, 0.0);
}

void TestSettings::registration()
{
    const auto &[name, preferred, shown] = currentCase(LanguageCases);
    DelegateFixture fixture;
    SettingWindowsController settings({}, fixture.networking, fixture.clearCache, fixture.host.workspace,
                                      fixture.files.bundle(), Branding(), preferred);
    settings.showGeneralPane();
    settings.buttonClicked(u"btnAbout"_s);
    auto *link = settings.window()->findChild<QAbstractButton *>(u"rightButton"_s);
    QCOMPARE(link->isVisible(), shown);
    link->click();
    QCOMPARE(fixture.host.workspace.opened.size(), 1);
    QVERIFY(fixture.host.workspace.opened.first().scheme() == u"https"_s);
}

void TestSettings::opensAnewOnItsFirstPane()
{
    DelegateFixture fixture;
    fixture.addLastingService();
    fixture.signInAtServer();
    AppDelegate &delegate = fixture.delegate();
    delegate.showPreferenceWindow(); // without a service its place is taken by the sign-in window
    QTRY_VERIFY(fixture.loginShows());
    delegate.showQuillboxVolume();
    delegate.showPreferenceWindow();
    QWidget *window = DelegateFixture::visibleWindow(u"SettingWindowsController"_s);
    QVERIFY(window);
    window->findChild<QAbstractButton *>(u"btnAbout"_s)->click();
    QTRY_COMPARE(window->height(), window->sizeHint().height());
    delegate.showPreferenceWindow();
    QVERIFY(window->findChild<QWidget *>(u"viewGeneral"_s)->isVisible());
}

void TestSettings::clearCache()
{
    DelegateFixture fixture;
    fixture.signIn(1);
    const QString user = fixture.networking.userID();
    SettingWindowsController settings({.close = {}, .show = {}, .present = fixture.alerts.presenter()},
                                      fixture.networking, fixture.clearCache, fixture.host.workspace,
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
    // A choice that could not be kept is not shown as if it were.
    QVERIFY(fixture.alerts.texts.isEmpty());
    QVERIFY(QFile::remove(fixture.clearCache.path()));
    QVERIFY(QDir().mkdir(fixture.clearCache.path()));
    box->click();
    QVERIFY(!box->isChecked()); // what an unreadable file says
    box->click();
    QVERIFY(!box->isChecked());
    QCOMPARE(fixture.alerts.texts, QStringList(2, u"设置未能保存|请检查磁盘剩余空间后重试"_s));
}

void TestSettings::changePassword()
{
    const auto &[name, value, expected] = currentCase(Controls);
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
    button->dicUserInfo = QJsonObject{{u"pwdcontrol"_s, value}};
    settings.changePassowrds();
    QCOMPARE(calls, expected);
}

REGISTER_TEST(TestSettings)
#include "TestSettings.moc"
