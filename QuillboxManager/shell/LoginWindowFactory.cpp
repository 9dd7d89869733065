#include "shell/LoginWindowFactory.h"

#include "login/EmbeddedThirdLogin.h"
#include "login/LoginVerifyWindowController.h"
#include "login/LoginWindowController.h"
#include "login/QBChangePasswordController.h"
#include "login/ResetPWWindowController.h"
#include "login/ServerSettingWindowController.h"

namespace shell
{

LoginWindowFactory LoginWindowFactory::standard()
{
    // One window of single sign-on for all login windows, which come and go.
    const auto thirdLogin = std::make_shared<EmbeddedThirdLogin>();
    return {
        .login =
            [thirdLogin] {
                return std::make_unique<LoginWindowController>(
                    QBNetworking::sharedNetworking(), platform::UserDefaults::standard(),
                    platform::NotificationCenter::defaultCenter(), *thirdLogin);
            },
        .serverSetting = [] { return std::make_unique<ServerSettingWindowController>(); },
        .loginVerify = [] { return std::make_unique<LoginVerifyWindowController>(); },
        .resetPassword = [] { return std::make_unique<ResetPWWindowController>(); },
        .changePassword = [] { return std::make_unique<QBChangePasswordController>(); },
        .thirdLogin = [thirdLogin] { return thirdLogin->window(); },
    };
}

} // namespace shell
