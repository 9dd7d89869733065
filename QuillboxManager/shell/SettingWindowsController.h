#pragma once

#include "api/QBNetworking.h"
#include "files/Branding.h"
#include "files/QBClearCacheInformation.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "shell/AlertPresenter.h"
#include "ui/QBWindowController.h"

#include <QVariantAnimation>

#include <functional>
#include <memory>

class QLabel;
namespace Ui
{
class SettingWindowsController;
}

namespace shell
{

/// The way to the change-password window, whoever keeps it, and to alerts.
struct ChangePasswordWindow {
    std::function<void()> close;
    std::function<void()> show;
    AlertPresenter present = presentAlert;
};

} // namespace shell

/// The settings window: a general, an account and an about pane. Main thread; the server is asked in the background
/// each time the window opens. The collaborators must outlive those calls.
class SettingWindowsController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit SettingWindowsController(
        shell::ChangePasswordWindow changePasswordWindow, QBNetworking &networking = QBNetworking::sharedNetworking(),
        QBClearCacheInformation &cache = QBClearCacheInformation::defaultClearCacheInformation(),
        platform::Workspace &workspace = platform::host().workspace,
        const platform::Bundle &bundle = platform::Bundle::main(), const Branding &branding = Branding(),
        const QStringList &preferredLanguages = platform::preferredLanguages(), QObject *parent = nullptr);
    ~SettingWindowsController() override;

    /// Opens the window in the middle of the screen, on its first pane.
    void showGeneralPane();

    /// Shows the pane of the button with that name; the general one for any other.
    void buttonClicked(const QString &identifier);
    void clickClearCacheBtn();
    void changePassowrds();
    void openRightWeb();

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool escapePressed() override;

private:
    void initialTabs();
    void initialGeneralView();
    void initialAccountView();
    void initialAboutView();
    void initialProgressIndicator();
    void colorLabels();
    void requestUserInfo();
    void fillAccount(const QJsonObject &user);
    void showPane(QWidget *pane);
    void fitTo(const QWidget &pane);
    void showClearCacheState();

    const shell::ChangePasswordWindow changePasswordWindow;
    QBNetworking &networking;
    QBClearCacheInformation &cache;
    platform::Workspace &workspace;
    const platform::Bundle bundle;
    const Branding branding;
    const QStringList languages;
    std::unique_ptr<Ui::SettingWindowsController> form;
    QVariantAnimation sizing; ///< of the container, which the window follows
    QWidget *pane = nullptr;  ///< the one that shows
};
