#pragma once

#include "login/LoginCalls.h"
#include "platform/UserDefaults.h"

/// One sign-in at a time, from the typed account to its outcome. Main thread; the calls run on the background pool.
/// Nothing is touched after an outcome was told, so that whoever hears it may destroy the attempt. The collaborators
/// must outlive the calls.
class LoginAttempt final : public QObject
{
    Q_OBJECT
public:
    LoginAttempt(QBNetworking &networking, platform::UserDefaults &defaults);

    bool isRunning() const { return running; }
    /// Ignored while another attempt runs.
    void start(const LoginRequest &request);

Q_SIGNALS:
    /// The server has answered for good; exactly one of the four outcomes follows at once.
    void ended();
    void succeeded();
    void refused(const QBError &error);
    /// The server replied with something that is neither a session nor an error.
    void unanswered();
    /// A second factor is needed and its code is on its way; all about it stands in the defaults.
    void codeSent();

    /// The server refused this attempt, whatever comes of a second factor.
    void denied();
    /// The next attempt needs a picture code. Comes a while after the refusal, unless another attempt has begun.
    void pictureCodeDemanded();

private:
    void handleAnswer(const LoginRequest &request, const LoginAnswer &answer);
    void requestSecondFactor(const LoginRequest &request);
    void handleCodeRequest(const LoginAnswer &answer);
    void demandPictureCodeLater();
    void end();

    QBNetworking &networking;
    platform::UserDefaults &defaults;
    bool running = false;
    int attemptNumber = 0;
};
