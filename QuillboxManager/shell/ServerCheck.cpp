#include "shell/ServerCheck.h"

#include "login/ServerVersionOutcome.h"
#include "platform/Dispatch.h"
#include "platform/UserDefaults.h"
#include "state/PersistentKeys.h"

#include <utility>

namespace shell
{

using Step = ServerCheckOutcome::Step;

ServerCheckOutcome outcomeOfProbe(ServerConfigResult result)
{
    if (result == ServerConfigResult::Succeeded)
        return {.step = Step::Login};
    return {.step = Step::ServerWindowWithCode, .code = static_cast<int>(result)};
}

ServerCheckOutcome outcomeOfVersionCheck(const QBError &error, const ServerReply &answer)
{
    switch (ServerVersionOutcome::of(error, answer)) {
    case ServerVersionOutcome::Kind::IllegalParameter: // no special text at the start
    case ServerVersionOutcome::Kind::ShowError:
        return {.step = Step::ServerWindowWithError, .text = error.localizedDescription()};
    case ServerVersionOutcome::Kind::AskForUpdate:
        return {.step = Step::UpdatePrompt};
    case ServerVersionOutcome::Kind::Finish:
        break;
    }
    return {.step = Step::Login};
}

namespace
{
/// Blocks; the second half of the check.
ServerCheckOutcome checkVersion(QBNetworking &networking)
{
    QBError error;
    const ServerReply answer = networking.requestCheckClientVersion(&error);
    networking.setDicUpdateVersion(answer);
    return outcomeOfVersionCheck(error, answer);
}
} // namespace

ServerCheck::ServerCheck(QBNetworking &client, platform::UserDefaults &userDefaults, QObject *parent)
    : QObject(parent), networking(client), defaults(userDefaults)
{
}

void ServerCheck::comfirmLogin(std::function<void(const ServerCheckOutcome &)> then)
{
    const QPointer<QObject> guard(this);
    const QString server = defaults.string(PersistentKeys::serverID());
    const QString port = defaults.string(PersistentKeys::authportNew());
    if (server.isEmpty() || port.isEmpty()) {
        platform::dispatchMain(guard, [then = std::move(then)] { then({}); });
        return;
    }
    networking.serverConfigWithServer(server, port, QStringLiteral(""),
                                      [guard, &client = networking, then = std::move(then)](ServerConfigResult result) {
                                          ServerCheckOutcome outcome = outcomeOfProbe(result);
                                          if (outcome.step == Step::Login)
                                              outcome = checkVersion(client);
                                          platform::dispatchMain(guard, [then, outcome] { then(outcome); });
                                      });
}

} // namespace shell
