#pragma once

#include "api/QBNetworking.h"
#include "platform/NotificationCenter.h"
#include "shell/AlertPresenter.h"
#include "ui/QBWindowController.h"

class QCheckBox;
class QPlainTextEdit;
class QPushButton;

namespace shell
{

/// Shows the organisation's terms of use and can only be left by accepting them. Ticking the box records the acceptance
/// on the server, once; the button then asks the shell to go on with a notification.
class AgreementDialog : public QBWindowController
{
    Q_OBJECT
public:
    AgreementDialog(QBNetworking &networking, platform::NotificationCenter &notifications,
                    AlertPresenter present = presentAlert, QObject *parent = nullptr);

    /// Adds plain text, whatever it looks like.
    void loadUserProtocol(const QString &text);

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override { return false; }
    bool isResizable() const override { return true; }

private:
    void observeCheckBox();
    void showBtnShowVolumeNormal();
    void showBtnShowVolumeDisable();
    void showVolume();
    void sendAcceptance();

    QBNetworking &networking;
    platform::NotificationCenter &notifications;
    const AlertPresenter present;
    QPlainTextEdit *txtViewUserProtocol = nullptr;
    QCheckBox *btnReadUserProtocol = nullptr;
    QPushButton *btnShowVolume = nullptr;
    bool bFirstClickReadProtocol = false;
};

} // namespace shell
