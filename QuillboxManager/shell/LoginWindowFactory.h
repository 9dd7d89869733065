#pragma once

#include <functional>
#include <memory>

class LoginWindowController;
class QBWindowController;
class ServerSettingWindowController;

namespace shell
{

/// Makes the windows of the sign-in family. A null maker: this build has no such window, and what would lead to it is
/// logged and stays where it is.
struct LoginWindowFactory {
    std::function<std::unique_ptr<LoginWindowController>()> login;
    std::function<std::unique_ptr<ServerSettingWindowController>()> serverSetting;
    std::function<std::unique_ptr<QBWindowController>()> loginVerify;
    std::function<std::unique_ptr<QBWindowController>()> resetPassword;
    std::function<std::unique_ptr<QBWindowController>()> changePassword;
    /// The window of single sign-on while there is one, else null; it belongs to what opens it.
    std::function<QBWindowController *()> thirdLogin;

    /// The application's own windows on its shared objects.
    static LoginWindowFactory standard();
};

} // namespace shell
