#pragma once

#include "files/Branding.h"
#include "login/LoginAttempt.h"
#include "login/LoginFaces.h"
#include "login/PictureCodeSource.h"
#include "login/ThirdLoginOpener.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/QBWindowController.h"

#include <memory>

class LoginWindowView;
class QBChangePasswordController;

namespace Ui
{
class LoginWindowController;
}

/// The sign-in window. Main thread; every server call runs on the background pool and its late answer is dropped when
/// the window has moved on or is gone. The collaborators must outlive the controller's calls. Closing the window quits.
class LoginWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    LoginWindowController(QBNetworking &networking, platform::UserDefaults &defaults,
                          platform::NotificationCenter &center, ThirdLoginOpener &thirdLogin,
                          const Branding &branding = Branding(), QObject *parent = nullptr);
    ~LoginWindowController() override;

    /// Shows the window, in the next turn of the event loop, and signs in by itself when `autoLogin` is set, the user
    /// wants that and the server's configuration allows it.
    void showLoginWindowAutoLoginIfNeeded(bool autoLogin);

    /// Reads the server's configuration anew and lays the window out for it.
    void initialUI();

    // Actions.
    void loginBtn();
    void serverSettingBtn();
    void thirdLoginBtn();
    void forgetMyPWD();
    void refreshVcode();
    void changeLoginThirdModeUI();
    void changeLoginNormalModeUI();
    void performRememberPassword();
    void performAutoLogin();

    void showMessage(const QString &message);
    void hideMessage();
    void showError(const QBError &error);
    void showChangePasswordAlertWithMessage(const QString &message);
    bool validateInputs();
    /// Names the picture code on show at the server; null before the first.
    QString uuid() const { return pictureCodes.uuid(); }

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;

private:
    void awakeFromNib();
    void connectControls();
    Ui::LoginWindowController &form();

    void saveUserDefaults();

    // One attempt.
    bool performReturn();
    void controlTextDidChange();
    void refreshComfirmButton();
    LoginRequest typedRequest();
    void connectAttempt();
    void connectFaces();
    void handleSuccess();
    void handleCodeSent();
    void handleLoginVerifyErrorMessage(const QBError &error);
    void setVcodeUI();

    QBNetworking &networking;
    platform::UserDefaults &defaults;
    platform::NotificationCenter &center;
    ThirdLoginOpener &thirdLogin;
    const Branding branding;

    LoginWindowView *view = nullptr; ///< owned by the base class
    bool askingReachability = false;
    LoginAttempt attempt;
    LoginFaces faces;
    PictureCodeSource pictureCodes;
    std::unique_ptr<QBChangePasswordController> changePasswordController;
};
