#pragma once

#include "platform/Bundle.h"
#include "platform/NotificationCenter.h"
#include "shell/AlertPresenter.h"
#include "shell/DriverSetup.h"
#include "shell/EarlySteps.h"
#include "shell/FontSetup.h"
#include "shell/LoginWindowFactory.h"
#include "shell/SettingWindowsController.h"
#include "shell/TrayHost.h"
#include "update/DownloadApp.h"

#include <chrono>
#include <functional>
#include <optional>

class QBNetworking;
namespace platform
{
struct Host;
class UserDefaults;
} // namespace platform

namespace shell
{

/// Everything the shell rests on. What is referred to must outlive the controller and its background calls.
struct ShellContext {
    platform::Host &host;
    QBNetworking &networking;
    platform::UserDefaults &defaults;
    platform::NotificationCenter &center;
    platform::Bundle bundle;
    LoginWindowFactory windows;
    AlertPresenter present = presentAlert;
    std::function<std::unique_ptr<SettingWindowsController>(ChangePasswordWindow)> makeSettings;
    std::unique_ptr<TrayHost> (*makeTrayHost)() = TrayHost::create;
    FontSetup::FontNames fontNames;
    DriverPauses driverPauses = {};
    std::chrono::milliseconds serviceWatchInterval{2000};
    /// How long a companion may take to end; more than it grants itself for saving what is unsaved.
    std::chrono::milliseconds serviceStopPatience{15000};
    std::chrono::milliseconds forwardingRetry{5000};
    std::function<void()> endEventLoop;
    std::optional<EarlySteps> earlySteps; ///< unset: they begin when launching has finished
    std::function<DownloadApp &()> installer = DownloadApp::sharedDownloadApp;

    /// The running application's.
    static ShellContext ofApplication();
};

} // namespace shell
