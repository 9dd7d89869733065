#include "EveryWindow.h"

#include "files/QBClearCacheInformation.h"
#include "login/LoginVerifyWindowController.h"
#include "login/LoginWindowController.h"
#include "login/QBChangePasswordController.h"
#include "login/QuickStartWindowController.h"
#include "login/ResetPWWindowController.h"
#include "login/ServerSettingWindowController.h"
#include "login/ThirdLoginWindowController.h"
#include "login/UserProtocolWindowController.h"
#include "login/VerifyErrorText.h"
#include "shell/SearchWindowsController.h"
#include "shell/SettingWindowsController.h"
#include "support/FakeHost.h"
#include "support/FakeWebBrowser.h"
#include "ui/QBImageButton.h"
#include "update/UpdateWindowController.h"
#include "update/updateProgressWindowController.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace testing
{

namespace
{
using Controller = KnownWindow::Controller;

/// The hosts of all windows; background work may use them until the process ends.
FakeHost &fakeHost()
{
    static auto *const host = new FakeHost;
    return *host;
}

FakeWebBrowsers &fakeBrowsers()
{
    static FakeWebBrowsers browsers;
    return browsers;
}

bool realBrowser = false;

/// Null stands for the application's own.
platform::WebBrowserMaker browserMaker()
{
    return realBrowser ? platform::WebBrowserMaker() : fakeBrowsers().maker();
}

Controller openLogin(ServedScene &scene)
{
    // The fields of a form tell the application's own centre of their focus.
    auto login = std::make_shared<LoginWindowController>(*scene.networking, scene.client.defaults,
                                                         platform::NotificationCenter::defaultCenter(), scene);
    login->showLoginWindowAutoLoginIfNeeded(false);
    return login;
}

Controller openVerification(ServedScene &scene)
{
    scene.client.defaults.set(u"loginusername"_s, ServedScene::account());
    scene.client.defaults.set(u"loginpassword"_s, ServedScene::password());
    scene.client.defaults.set(u"loginverifyphonenumber"_s, u"138****8000"_s);
    scene.client.defaults.set(u"loginverifytimer"_s, 60);
    VerifyErrorText::resetWrongCodes();
    auto verification =
        std::make_shared<LoginVerifyWindowController>(*scene.networking, scene.client.defaults, scene.center);
    verification->showWindow();
    return verification;
}

Controller openChangePassword(ServedScene &scene)
{
    scene.networking->setNotLoginAccountName(ServedScene::account());
    auto change = std::make_shared<QBChangePasswordController>(*scene.networking, scene.center, fakeHost().volumes,
                                                               fakeHost().distributed);
    change->showWindow();
    return change;
}

Controller openServerSettings(ServedScene &scene)
{
    auto settings = std::make_shared<ServerSettingWindowController>(*scene.networking, scene.client.defaults,
                                                                    platform::NotificationCenter::defaultCenter());
    settings->setNecessary(true);
    settings->showServerSettingWindowWithCode(0);
    return settings;
}

bool showsNormalFace(ServedScene &, QWidget &window)
{
    return ServedScene::shows(&window, "viewNormal");
}

bool typed(QWidget &window, const char *field, const QString &text)
{
    ServedScene::find<QLineEdit>(&window, field)->setText(text);
    return true;
}

bool refused(ServedScene &scene, QWidget &window)
{
    const QString line = ServedScene::message(&window, "txtErrorMessage");
    auto *button = ServedScene::find<QAbstractButton>(&window, "btnLogin");
    if (!showsNormalFace(scene, window) || !line.isEmpty() || button->text().isEmpty())
        return !line.isEmpty() && !button->text().isEmpty();
    typed(window, "txtUserName", ServedScene::account());
    typed(window, "txtPassword", u"wrong"_s);
    button->click();
    return false;
}

bool showsPicture(ServedScene &, QWidget &window)
{
    return !ServedScene::find<QBImageButton>(&window, "vcodeImage")->image().isNull();
}

bool toldToChange(ServedScene &scene, QWidget &window)
{
    if (ServedScene::alert() || !showsNormalFace(scene, window))
        return ServedScene::alert() != nullptr;
    typed(window, "txtUserName", ServedScene::account());
    typed(window, "txtPassword", ServedScene::password());
    ServedScene::find<QAbstractButton>(&window, "btnLogin")->click();
    return false;
}

QJsonObject thirdAuth()
{
    const QJsonObject config{{u"authServer"_s, u"https://sso.example"_s}, {u"loginButtonText"_s, u"R&D Portal"_s}};
    return {{u"thirdauth"_s, QJsonObject{{u"id"_s, u"sso"_s}, {u"config"_s, config}}}};
}

QList<KnownWindow> signInFamily()
{
    const QJsonObject pictureCode{{u"isenable"_s, true}, {u"passwderrcnt"_s, 0}};
    const QJsonObject forgotten{{u"send_vcode_by_email"_s, true}};
    return {
        {"sign-in", {{u"vcode_server_status"_s, forgotten}}, openLogin, showsNormalFace},
        {"sign-in-refused", {}, openLogin, refused},
        {"sign-in-picture-code", {{u"vcode_login_config"_s, pictureCode}}, openLogin, showsPicture},
        {"sign-in-one-time-password",
         {{u"dualfactor_auth_server_status"_s, QJsonObject{{u"auth_by_OTP"_s, true}}}},
         openLogin,
         [](ServedScene &, QWidget &window) { return ServedScene::shows(&window, "txtOTPCode"); }},
        {"sign-in-single-sign-on", thirdAuth(), openLogin,
         [](ServedScene &, QWidget &window) { return ServedScene::shows(&window, "viewThird"); }},
        {"sign-in-without-server",
         {{u"fail"_s, QJsonObject{{u"auth1.getconfig"_s, 500000}}}},
         openLogin,
         [](ServedScene &, QWidget &window) { return ServedScene::shows(&window, "btnRetry"); }},
        {"password-must-change", {{u"password"_s, QJsonObject{{u"initial_change"_s, true}}}}, openLogin, toldToChange},
        {"verification", {}, openVerification},
        {"change-password",
         {{u"enable_strong_pwd"_s, true}},
         openChangePassword,
         [](ServedScene &, QWidget &window) { return !ServedScene::message(&window, "passwordRegulation").isEmpty(); }},
        {"server-settings", {}, openServerSettings},
    };
}

Controller openAgreement(ServedScene &scene)
{
    auto agreement = std::make_shared<UserProtocolWindowController>(*scene.networking, scene.center);
    agreement->showWindow();
    agreement->loadUserProtocol(QString(u"用户协议 Terms of use. "_s).repeated(60));
    return agreement;
}

Controller openThirdLogin(ServedScene &scene)
{
    auto third = std::make_shared<ThirdLoginWindowController>(*scene.networking, scene.center, browserMaker());
    third->initWithAuthURL(scene.address(u"/sso/hash"_s), u"sso"_s);
    third->showWindow();
    third->loadThirdWebView();
    return third;
}

Controller openReset(ServedScene &scene)
{
    auto reset = std::make_shared<ResetPWWindowController>(
        ResetPWWindowController::Collaborators{.networking = *scene.networking,
                                               .globe = scene.client.globe,
                                               .defaults = scene.client.defaults,
                                               .center = scene.center,
                                               .userNotifications = fakeHost().userNotifications,
                                               .browser = browserMaker()});
    reset->showWindow();
    return reset;
}

Controller openQuickStart(ServedScene &scene)
{
    auto quickStart = std::make_shared<QuickStartWindowController>(browserMaker());
    quickStart->initWithWindowNibName(u"QuickStartWindowController"_s, QUrl(scene.address(u"/quickstart"_s)));
    quickStart->showWindow();
    quickStart->loadQuickStartWebView();
    return quickStart;
}

/// Until the page is there, or what stands in its place.
bool showsPage(ServedScene &, QWidget &window)
{
    auto *panel = window.findChild<WebPanel *>();
    if (FakeWebBrowser *fake = fakeBrowsers().newest; fake && panel->state() == WebPanel::State::Loading)
        Q_EMIT fake->documentReady();
    return panel->state() == WebPanel::State::Page || panel->state() == WebPanel::State::Failure;
}

QList<KnownWindow> webWindows()
{
    const QJsonObject ways{{u"send_vcode_by_email"_s, true}, {u"send_vcode_by_sms"_s, true}};
    return {
        {"third-login", thirdAuth(), openThirdLogin, showsPage},
        {"reset-password", {{u"vcode_server_status"_s, ways}}, openReset, showsPage},
        {"quick-start", {}, openQuickStart, showsPage},
    };
}

Controller openSearch(ServedScene &scene)
{
    auto search = std::make_shared<SearchWindowsController>(scene.folder.filePath(u"nobody.sock"_s));
    search->showWindow();
    return search;
}

Controller openSettings(ServedScene &scene, const QString &pane)
{
    scene.networking->loginWithAccountName(ServedScene::account(), ServedScene::password(), {}, {},
                                           [](const QBError &, const ServerReply &) {});
    static auto *const cache =
        new QBClearCacheInformation(fakeHost().folders.library() + QStringLiteral("/cache.plist"));
    auto settings = std::make_shared<SettingWindowsController>(shell::ChangePasswordWindow{}, *scene.networking, *cache,
                                                               fakeHost().workspace);
    settings->showGeneralPane();
    settings->buttonClicked(pane);
    return settings;
}

KnownWindow settings(const char *name, const QString &pane)
{
    return {name, {}, [pane](ServedScene &scene) { return openSettings(scene, pane); }};
}

Controller openUpdate(ServedScene &scene)
{
    scene.networking->setDicUpdateVersion(QJsonObject{{u"result"_s, u"optional"_s}, {u"latest"_s, u"9.9.9"_s}});
    auto update = std::make_shared<UpdateWindowController>(*scene.networking);
    update->runModalForWindow([](int) {});
    return update;
}

Controller openUpdateProgress(ServedScene &)
{
    auto progress = std::make_shared<updateProgressWindowController>();
    progress->showWindow();
    progress->setProgress(42);
    return progress;
}

QList<KnownWindow> others()
{
    return {
        {"agreement", {}, openAgreement},
        settings("settings-general", u"btnGeneral"_s),
        settings("settings-account", u"btnAccount"_s),
        settings("settings-about", u"btnAbout"_s),
        {"search", {}, openSearch},
        {"update", {}, openUpdate},
        {"update-progress", {}, openUpdateProgress},
    };
}
} // namespace

void useRealBrowser()
{
    realBrowser = true;
}

QList<KnownWindow> everyWindow()
{
    return signInFamily() + webWindows() + others();
}

} // namespace testing
