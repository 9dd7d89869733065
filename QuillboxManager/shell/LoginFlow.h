#pragma once

#include "platform/NotificationCenter.h"
#include "shell/LoginWindowFactory.h"
#include "ui/WindowAnimator.h"

#include <QObject>

#include <memory>

class QBNetworking;
class ShowUpdateVersionDelegate;

namespace shell
{

/// Where the request for the login window leads.
enum class BackToLogin {
    FlipFromReset,  ///< sent by the reset window
    FlipFromServer, ///< the server window turns into the login window
    ShowAtOnce,     ///< the login page is the authenticator's: no flip
};
BackToLogin decideBackToLogin(bool sentWithObject, bool autoCasRedirect);

/// Owns the windows of the sign-in family and turns one into the next. Main thread. A window that is replaced is closed
/// and destroyed later, so that it may be the one that asked.
class LoginFlow : public QObject
{
public:
    LoginFlow(QBNetworking &networking, platform::NotificationCenter &center, LoginWindowFactory factory,
              ShowUpdateVersionDelegate &updateDelegate, QObject *parent = nullptr);
    ~LoginFlow() override;

    void addObservers();

    void showLoginWindowAllowAutoLogin(bool allow);
    /// Both open the server window as a step that must be passed.
    void showServerSettingWindowWithCode(int code);
    void showServerSettingWindowWithErrorLocalizedDescription(const QString &description);

    void flipToServerSettingWindow();
    void flipToLoginVerifyWindow();
    void verifyWCBackToLoginWindow();
    void flipToForgetPWDWindow();
    void backToLoginWindow(bool sentWithObject);
    void closeThirdWindowShowLoginWindow();

    void closeLoginWindow();
    /// The user put the update off in the server window.
    void serverWindowDisappear();
    /// Makes the server window when there is none.
    void ensureServerSettingWindow();
    /// Shows an error line in the server window, and the window, which may be left without another server.
    void displayInServerSettingWindow(const QString &text);

    void showChangePasswordWindow();
    void closeChangePasswordWindow();
    /// A window of the family that is on the screen, else null.
    QBWindowController *visibleWindow() const;

    QBWindowController *loginWindow() const;
    QBWindowController *serverSettingWindow() const;
    QBWindowController *thirdLoginWindow() const;

private:
    void observe(const QString &name, void (LoginFlow::*handler)());
    void newLoginWindow();
    void newServerSettingWindow();
    void flip(bool right, QBWindowController *from, QBWindowController *to);

    QBNetworking &networking;
    platform::NotificationCenter &center;
    const LoginWindowFactory factory;
    ShowUpdateVersionDelegate &updateDelegate;
    WindowAnimator animator;
    std::unique_ptr<LoginWindowController> login;
    std::unique_ptr<ServerSettingWindowController> serverSetting;
    std::unique_ptr<QBWindowController> loginVerify;
    std::unique_ptr<QBWindowController> resetPassword;
    std::unique_ptr<QBWindowController> changePassword;
};

} // namespace shell
