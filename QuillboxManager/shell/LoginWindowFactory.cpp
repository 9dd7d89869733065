#include "shell/LoginWindowFactory.h"

#include "login/LoginVerifyWindowController.h"
#include "login/LoginWindowController.h"
#include "login/QBChangePasswordController.h"
#include "login/ServerSettingWindowController.h"

namespace shell
{

LoginWindowFactory LoginWindowFactory::standard()
{
    return {
        .login = [] { return std::make_unique<LoginWindowController>(); },
        .serverSetting = [] { return std::make_unique<ServerSettingWindowController>(); },
        .loginVerify = [] { return std::make_unique<LoginVerifyWindowController>(); },
        .changePassword = [] { return std::make_unique<QBChangePasswordController>(); },
    };
}

} // namespace shell
