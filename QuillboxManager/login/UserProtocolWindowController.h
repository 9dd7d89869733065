#pragma once

#include "api/QBNetworking.h"
#include "platform/NotificationCenter.h"
#include "ui/QBWindowController.h"

#include <memory>

class QBCheckBox;

namespace Ui
{
class UserProtocolWindowController;
}

/// Shows the organisation's terms of use and can only be left by accepting them. Ticking the box records the acceptance
/// on the server, once; the button then asks the shell to go on with a notification. Main thread; the call runs on the
/// background pool. The collaborators must outlive it.
class UserProtocolWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit UserProtocolWindowController(
        QBNetworking &networking = QBNetworking::sharedNetworking(),
        platform::NotificationCenter &posts = platform::NotificationCenter::defaultCenter(), QObject *parent = nullptr);
    ~UserProtocolWindowController() override;

    /// Appends plain text, whatever it looks like.
    void loadUserProtocol(const QString &text);
    void showBtnShowVolumeNormal();
    void showBtnShowVolumeDisable();
    void showVolume();

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override { return false; }
    bool isResizable() const override { return true; }

private:
    void initWindow();
    void sendAcceptance();

    QBNetworking &networking;
    platform::NotificationCenter &notifications;
    std::unique_ptr<Ui::UserProtocolWindowController> form;
    QBCheckBox *btnReadUserProtocol = nullptr; ///< owned by the window
    bool bFirstClickReadProtocol = false;      ///< the acceptance was sent, with whatever success
};
