#pragma once

#include "api/QBNetworking.h"
#include "files/Branding.h"
#include "platform/Host.h"
#include "platform/NotificationCenter.h"
#include "ui/QBWindowController.h"

class QBButton;
class QBSecondaryButton;
class QBSecureTextField;
class QBSpinner;
class QLabel;
class QVBoxLayout;

/// The change-password window, built in code. Main thread; the change runs on the background pool. The collaborators
/// must outlive its calls.
class QBChangePasswordController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit QBChangePasswordController(
        QBNetworking &networking = QBNetworking::sharedNetworking(),
        platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter(),
        const platform::Volumes &volumes = platform::host().volumes,
        platform::DistributedNotificationCenter &distributed = platform::host().distributed,
        const Branding &branding = Branding(), QObject *parent = nullptr);

    void changePassword();
    void cancelChangePassword();
    void changePasswordSuccess();

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;
    bool escapePressed() override;

private:
    void addField(QVBoxLayout *column, const QString &labelKey, QBSecureTextField *field);
    void addButtons(QVBoxLayout *column);
    void showPasswordRegulation();
    bool performReturn(QObject *field);
    void setChanging(bool isChanging);
    void handleOutcome(const QBError &error);
    void showStatus(const QString &text);
    void stopServiceIfVolumeExists();

    QBNetworking &networking;
    platform::NotificationCenter &center;
    const platform::Volumes &volumes;
    platform::DistributedNotificationCenter &distributed;
    const Branding branding;

    QWidget *myWindow = nullptr; ///< owned by the base class, as all controls are
    QWidget *bottomView = nullptr;
    QBSecureTextField *oldPassword = nullptr;
    QBSecureTextField *theNewpassword = nullptr;
    QBSecureTextField *comfirmPassword = nullptr;
    QLabel *errorMessage = nullptr;
    QLabel *passwordRegulation = nullptr;
    QBButton *confirmButton = nullptr;
    QBSecondaryButton *cancelButton = nullptr;
    QBSpinner *indicator = nullptr;
    bool isAccountLocked = false;
    bool changing = false;
    bool changed = false; ///< done; the window only waits to close
};
