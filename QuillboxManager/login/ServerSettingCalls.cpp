#include "login/ServerSettingCalls.h"

#include "platform/Dispatch.h"

#include <QPointer>

namespace ServerSettingCalls
{

void configure(QBNetworking &networking, QObject *context, const QString &address, const QString &port,
               std::function<void(int code)> then)
{
    const auto handle = [guard = QPointer<QObject>(context), then = std::move(then)](ServerConfigResult result) {
        platform::dispatchMain(guard, [then, code = static_cast<int>(result)] { then(code); });
    };
    networking.serverConfigWithServer(address, port, QLatin1String(""), handle);
}

void checkClientVersion(QBNetworking &networking, QObject *context,
                        std::function<void(const QBError &, const ServerReply &)> then)
{
    struct Answer {
        QBError error;
        ServerReply reply;
    };
    const auto ask = [&networking] {
        Answer answer;
        answer.reply = networking.requestCheckClientVersion(&answer.error);
        return answer;
    };
    platform::inBackground(context, ask,
                           [then = std::move(then)](const Answer &answer) { then(answer.error, answer.reply); });
}

void pingStoredServer(QBNetworking &networking, QObject *context, bool apiFamily,
                      std::function<void(bool answered)> then)
{
    platform::inBackground(
        context, [&networking, apiFamily] { return networking.pingStoredServer(apiFamily); }, std::move(then));
}

} // namespace ServerSettingCalls
