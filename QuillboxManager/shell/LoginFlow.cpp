#include "shell/LoginFlow.h"

#include "api/QBNetworking.h"
#include "login/LoginWindowController.h"
#include "login/ServerSettingWindowController.h"
#include "platform/Log.h"
#include "shell/VisibleWindow.h"
#include "state/NotificationNames.h"
#include "ui/Application.h"

#include <utility>

namespace shell
{

namespace
{
/// Takes a window off the screen; its controller may be the caller and so ends with the next turn of the event loop.
template <class Controller> void retire(std::unique_ptr<Controller> &controller)
{
    if (!controller)
        return;
    controller->close();
    controller.release()->deleteLater();
}

/// Null, and a log line, where this build has no such window.
template <class Maker> auto make(const Maker &maker, const char *window) -> decltype(maker())
{
    if (maker)
        return maker();
    platform::log(QStringLiteral("this build has no %1").arg(QLatin1String(window)));
    return nullptr;
}

QWidget *windowOf(QBWindowController *controller)
{
    return controller ? controller->window() : nullptr;
}
} // namespace

BackToLogin decideBackToLogin(bool sentWithObject, bool autoCasRedirect)
{
    if (sentWithObject)
        return BackToLogin::FlipFromReset;
    return autoCasRedirect ? BackToLogin::ShowAtOnce : BackToLogin::FlipFromServer;
}

LoginFlow::LoginFlow(QBNetworking &client, platform::NotificationCenter &notifications, LoginWindowFactory windows,
                     ShowUpdateVersionDelegate &updates, QObject *parent)
    : QObject(parent), networking(client), center(notifications), factory(std::move(windows)), updateDelegate(updates)
{
}

LoginFlow::~LoginFlow() = default;

void LoginFlow::observe(const QString &name, void (LoginFlow::*handler)())
{
    center.addObserver(this, name, [this, handler](const platform::Notification &) { (this->*handler)(); });
}

void LoginFlow::addObservers()
{
    observe(NotificationNames::wantServerSettingWindow(), &LoginFlow::flipToServerSettingWindow);
    observe(NotificationNames::wantLoginVerifyWindow(), &LoginFlow::flipToLoginVerifyWindow);
    observe(NotificationNames::loginVerifyWantLoginWindow(), &LoginFlow::verifyWCBackToLoginWindow);
    observe(NotificationNames::wantForgetPWDWindow(), &LoginFlow::flipToForgetPWDWindow);
    observe(NotificationNames::closeThirdLoginWindowShowLoginWindow(), &LoginFlow::closeThirdWindowShowLoginWindow);
    center.addObserver(this, NotificationNames::wantLoginWindow(), [this](const platform::Notification &notification) {
        backToLoginWindow(notification.object.isValid());
    });
}

void LoginFlow::newLoginWindow()
{
    retire(login);
    login = make(factory.login, "login window");
}

void LoginFlow::newServerSettingWindow()
{
    retire(serverSetting);
    serverSetting = make(factory.serverSetting, "server window");
    if (serverSetting)
        serverSetting->setShowUpdateVersionDelegate(&updateDelegate);
}

void LoginFlow::ensureServerSettingWindow()
{
    if (!serverSetting)
        newServerSettingWindow();
}

void LoginFlow::showLoginWindowAllowAutoLogin(bool allow)
{
    newLoginWindow();
    if (login)
        login->showLoginWindowAutoLoginIfNeeded(allow);
}

void LoginFlow::showServerSettingWindowWithCode(int code)
{
    ensureServerSettingWindow();
    if (!serverSetting)
        return;
    serverSetting->setNecessary(true);
    serverSetting->showServerSettingWindowWithCode(code);
}

void LoginFlow::showServerSettingWindowWithErrorLocalizedDescription(const QString &description)
{
    showServerSettingWindowWithCode(0);
    if (serverSetting)
        serverSetting->DisplayServerSettingWindow(description);
}

void LoginFlow::flip(bool right, QBWindowController *from, QBWindowController *to)
{
    if (!to)
        return;
    animator.setFlipRight(right);
    animator.flip(windowOf(from), to->window());
}

void LoginFlow::flipToServerSettingWindow()
{
    newServerSettingWindow();
    flip(true, login.get(), serverSetting.get());
}

void LoginFlow::flipToLoginVerifyWindow()
{
    retire(loginVerify);
    loginVerify = make(factory.loginVerify, "verification window");
    flip(true, login.get(), loginVerify.get());
}

void LoginFlow::verifyWCBackToLoginWindow()
{
    newLoginWindow();
    flip(false, loginVerify.get(), login.get());
}

void LoginFlow::flipToForgetPWDWindow()
{
    if (!factory.resetPassword) {
        make(factory.resetPassword, "password reset window");
        return;
    }
    // One reset window at a time: the name is observed again when it sends the user back.
    center.removeObserver(this, NotificationNames::wantForgetPWDWindow());
    retire(resetPassword);
    resetPassword = factory.resetPassword();
    flip(true, login.get(), resetPassword.get());
}

void LoginFlow::backToLoginWindow(bool sentWithObject)
{
    newLoginWindow();
    switch (decideBackToLogin(sentWithObject, networking.autoCasRedirect())) {
    case BackToLogin::FlipFromReset:
        center.removeObserver(this, NotificationNames::wantForgetPWDWindow());
        observe(NotificationNames::wantForgetPWDWindow(), &LoginFlow::flipToForgetPWDWindow);
        flip(false, resetPassword.get(), login.get());
        break;
    case BackToLogin::FlipFromServer:
        flip(false, serverSetting.get(), login.get());
        break;
    case BackToLogin::ShowAtOnce:
        animator.setFlipRight(false);
        if (serverSetting)
            serverSetting->close();
        if (login)
            login->showLoginWindowAutoLoginIfNeeded(false);
        break;
    }
}

void LoginFlow::closeThirdWindowShowLoginWindow()
{
    if (!login)
        newLoginWindow();
    if (login)
        login->showWindow();
}

void LoginFlow::closeLoginWindow()
{
    if (login)
        login->close();
}

void LoginFlow::serverWindowDisappear()
{
    if (serverSetting)
        serverSetting->performDisappear();
}

void LoginFlow::displayInServerSettingWindow(const QString &text)
{
    ensureServerSettingWindow();
    if (!serverSetting)
        return;
    if (!serverSetting->isVisible())
        serverSetting->showServerSettingWindowWithCode(0);
    serverSetting->DisplayServerSettingWindow(text);
}

void LoginFlow::showChangePasswordWindow()
{
    retire(changePassword);
    changePassword = make(factory.changePassword, "change-password window");
    if (!changePassword)
        return;
    changePassword->showWindow();
    Application::activate(changePassword->window());
}

void LoginFlow::closeChangePasswordWindow()
{
    retire(changePassword);
}

QBWindowController *LoginFlow::loginWindow() const
{
    return login.get();
}

QBWindowController *LoginFlow::thirdLoginWindow() const
{
    return factory.thirdLogin ? factory.thirdLogin() : nullptr;
}

QBWindowController *LoginFlow::serverSettingWindow() const
{
    return serverSetting.get();
}

QBWindowController *LoginFlow::visibleWindow() const
{
    return firstVisible({changePassword.get(), resetPassword.get(), loginVerify.get(), thirdLoginWindow(),
                         serverSettingWindow(), loginWindow()});
}

} // namespace shell
