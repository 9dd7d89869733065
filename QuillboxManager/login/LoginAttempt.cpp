#include "login/LoginAttempt.h"

#include "login/LoginOutcome.h"
#include "login/SecondFactorHandOver.h"
#include "platform/Dispatch.h"

namespace
{
constexpr std::chrono::milliseconds PictureCodeDelay{500};
}

LoginAttempt::LoginAttempt(QBNetworking &client, platform::UserDefaults &settings)
    : networking(client), defaults(settings)
{
}

void LoginAttempt::start(const LoginRequest &request)
{
    if (std::exchange(running, true))
        return;
    ++attemptNumber;
    LoginCalls::signIn(networking, this, request,
                       [this, request](const LoginAnswer &answer) { handleAnswer(request, answer); });
}

void LoginAttempt::handleAnswer(const LoginRequest &request, const LoginAnswer &answer)
{
    if (answer.error || !answer.answered)
        Q_EMIT denied();
    if (answer.error && LoginOutcome::demandsPictureCode(answer.reply))
        demandPictureCodeLater();
    if (answer.answered && LoginOutcome::ofLogin(answer.error) == LoginOutcome::Kind::SecondFactor) {
        requestSecondFactor(request);
        return;
    }
    end();
    if (!answer.answered)
        Q_EMIT unanswered();
    else if (answer.error)
        Q_EMIT refused(answer.error);
    else
        Q_EMIT succeeded();
}

void LoginAttempt::requestSecondFactor(const LoginRequest &request)
{
    SecondFactorHandOver handOver;
    handOver.account = request.account;
    handOver.password = request.password;
    handOver.vcodeInfo = request.vcodeInfo;
    handOver.storeAttempt(defaults);
    const SecondFactorHandOver stored = SecondFactorHandOver::read(defaults);
    LoginCalls::requestCode(networking, this, request.account, request.password, QLatin1String(""), stored.authbysms,
                            stored.authbyemail, [this](const LoginAnswer &answer) { handleCodeRequest(answer); });
}

void LoginAttempt::handleCodeRequest(const LoginAnswer &answer)
{
    if (answer.answered && answer.error.isNull())
        SecondFactorHandOver::storeAnswer(defaults, *answer.reply);
    end();
    if (!answer.answered)
        Q_EMIT unanswered();
    else if (answer.error)
        Q_EMIT refused(answer.error);
    else
        Q_EMIT codeSent();
}

void LoginAttempt::demandPictureCodeLater()
{
    platform::dispatchAfter(PictureCodeDelay, this, [this, number = attemptNumber] {
        if (number == attemptNumber)
            Q_EMIT pictureCodeDemanded();
    });
}

void LoginAttempt::end()
{
    running = false;
    Q_EMIT ended();
}
