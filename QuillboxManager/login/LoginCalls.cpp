#include "login/LoginCalls.h"

#include "platform/Dispatch.h"

#include <QPointer>

namespace LoginCalls
{

void signIn(QBNetworking &networking, QObject *context, const LoginRequest &request,
            std::function<void(const LoginAnswer &)> then)
{
    platform::dispatchGlobal([&networking, guard = QPointer<QObject>(context), request, then = std::move(then)] {
        bool answered = false;
        // The session counts as soon as the client says so; its follow-up work must not hold up the window.
        const auto handle = [&](const QBError &error, const ServerReply &reply) {
            if (std::exchange(answered, true))
                return;
            platform::dispatchMain(guard, [then, error, reply] { then({true, error, reply}); });
        };
        networking.loginWithAccountName(request.account, request.password, request.vcodeInfo,
                                        request.dualfactorauthinfo, handle);
        if (!answered)
            platform::dispatchMain(guard, [then] { then({false, {}, {}}); });
    });
}

void requestCode(QBNetworking &networking, QObject *context, const QString &account, const QString &password,
                 const QString &oldtelnum, bool authbysms, bool authbyemail,
                 std::function<void(const LoginAnswer &)> then)
{
    const auto work = [=, &networking] {
        LoginAnswer answer;
        answer.reply = networking.sendAuthVCode(account, password, oldtelnum, authbysms, authbyemail, &answer.error);
        answer.answered = answer.error || answer.reply;
        return answer;
    };
    platform::inBackground(context, work, std::move(then));
}

void pictureCode(QBNetworking &networking, QObject *context, const QString &uuid,
                 std::function<void(const LoginAnswer &)> then)
{
    const auto work = [&networking, uuid] {
        LoginAnswer answer;
        answer.reply = networking.getVcode(uuid, &answer.error);
        answer.answered = answer.error || answer.reply;
        return answer;
    };
    platform::inBackground(context, work, std::move(then));
}

} // namespace LoginCalls
