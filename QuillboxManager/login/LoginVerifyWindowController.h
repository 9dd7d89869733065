#pragma once

#include "api/QBNetworking.h"
#include "files/Branding.h"
#include "login/Countdown.h"
#include "login/LoginCalls.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/QBWindowController.h"

#include <chrono>
#include <memory>

class QBChangePasswordController;
class QBSpinner;

namespace Ui
{
class LoginVerifyWindowController;
}

/// The second-factor window: the user types the code that was sent to a phone or a mailbox. All it knows of the attempt
/// comes from the user defaults. Main thread; calls run on the background pool. The collaborators must outlive them.
class LoginVerifyWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit LoginVerifyWindowController(
        QBNetworking &networking = QBNetworking::sharedNetworking(),
        platform::UserDefaults &defaults = platform::UserDefaults::standard(),
        platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter(),
        const Branding &branding = Branding(), std::chrono::milliseconds second = std::chrono::seconds(1),
        QObject *parent = nullptr);
    ~LoginVerifyWindowController() override;

    void getVcode();
    void verifyVcode();
    void closeVerifyWindow();
    /// Counts down from n seconds to 0 and then allows another code; nothing happens for n of 0 or less.
    void setTime(qint64 seconds);

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;
    bool escapePressed() override;

private:
    void initialUI();
    void setUpControls();
    void showDestination();
    void controlTextDidChange();
    void showRemaining(qint64 seconds);
    void allowResend();
    void handleResent(const LoginAnswer &answer);
    void handleVerified(const LoginAnswer &answer);
    void restoreVerifyButton();
    void showError(const QBError &error);
    void showMessage(const QString &text, bool shaken);
    void hideMessage();
    void showChangePasswordAlert(const QString &message);

    QBNetworking &networking;
    platform::UserDefaults &defaults;
    platform::NotificationCenter &center;
    const Branding branding;
    std::unique_ptr<Ui::LoginVerifyWindowController> form;
    QBSpinner *indicator = nullptr;
    Countdown timer;
    bool verifying = false;
    int opening = 0; ///< changes with every end of the window; answers to calls from before are dropped
    std::unique_ptr<QBChangePasswordController> changePasswordController;
};
