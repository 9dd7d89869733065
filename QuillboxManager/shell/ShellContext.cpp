#include "shell/ShellContext.h"

#include "api/QBNetworking.h"
#include "platform/Host.h"
#include "platform/UserDefaults.h"
#include "shell/ProcessEnd.h"

namespace shell
{

ShellContext ShellContext::ofApplication()
{
    platform::Host &host = platform::host();
    const platform::Bundle &bundle = platform::Bundle::main();
    const QString installedFont = FontSetup::placesFor(bundle, host.folders).installed;
    return {
        .host = host,
        .networking = QBNetworking::sharedNetworking(),
        .defaults = platform::UserDefaults::standard(),
        .center = platform::NotificationCenter::defaultCenter(),
        .bundle = bundle,
        .windows = LoginWindowFactory::standard(),
        .makeSettings =
            [](ChangePasswordWindow passwords) {
                return std::make_unique<SettingWindowsController>(std::move(passwords));
            },
        .fontNames = [installedFont] { return FontSetup::availableFontNames(installedFont); },
        .endEventLoop = shell::endEventLoop,
    };
}

} // namespace shell
