#pragma once

#include "api/QBNetworking.h"

#include <QObject>

#include <functional>

namespace platform
{
class UserDefaults;
}

namespace shell
{

/// Which window the start goes to.
struct ServerCheckOutcome {
    enum class Step {
        ServerWindowWithCode,  ///< `code` says why
        ServerWindowWithError, ///< `text` says why
        UpdatePrompt,
        Login,
    };
    Step step = Step::ServerWindowWithCode;
    int code = 0;
    QString text;
};

/// Any thread.
ServerCheckOutcome outcomeOfProbe(ServerConfigResult result);
/// After a successful probe. A server without update packages (400003) has nothing against this version.
ServerCheckOutcome outcomeOfVersionCheck(const QBError &error, const ServerReply &answer);

/// Asks the stored server, in the background, whether it is there and accepts this version.
class ServerCheck : public QObject
{
public:
    ServerCheck(QBNetworking &networking, platform::UserDefaults &defaults, QObject *parent = nullptr);

    /// `then` runs once, later, on the main thread; not at all when this object is destroyed first.
    void comfirmLogin(std::function<void(const ServerCheckOutcome &)> then);

private:
    QBNetworking &networking;
    platform::UserDefaults &defaults;
};

} // namespace shell
