#include "login/ThirdLoginCalls.h"

#include "login/JsonValues.h"
#include "platform/Dispatch.h"

#include <QPointer>

#include <utility>

namespace ThirdLoginCalls
{

void readMatchUrl(QBNetworking &networking, QObject *context, std::function<void(const QString &)> then)
{
    const auto work = [&networking] {
        const ServerReply reply = networking.getServerConfig();
        if (!reply)
            return QString();
        const QJsonObject thirdauth = JsonValues::object(*reply, QStringLiteral("thirdauth"));
        return JsonValues::text(JsonValues::object(thirdauth, QStringLiteral("config")), QStringLiteral("matchUrl"));
    };
    platform::inBackground(context, work, std::move(then));
}

void signIn(QBNetworking &networking, QObject *context, const ThirdLoginRules::Sighting &sighting,
            const QString &userName, const QString &authID, std::function<void(const LoginAnswer &)> then)
{
    const QPointer<QObject> guard(context);
    platform::dispatchGlobal([&networking, guard, sighting, userName, authID, then = std::move(then)] {
        bool answered = false;
        const auto handle = [&](const QBError &error, const ServerReply &reply) {
            if (std::exchange(answered, true))
                return;
            platform::dispatchMain(guard, [then, error, reply] { then({true, error, reply}); });
        };
        if (sighting.kind == ThirdLoginRules::Sighting::Kind::Ticket)
            networking.loginWithTicket(sighting.ticket, userName, authID, handle);
        else
            networking.loginWithTicketDic(sighting.parameters, userName, authID, handle);
        if (!answered)
            platform::dispatchMain(guard, [then] { then({false, {}, {}}); });
    });
}

} // namespace ThirdLoginCalls
