#pragma once

#include "api/QBNetworking.h"

#include <QObject>

#include <functional>

/// A sign-in as typed.
struct LoginRequest {
    QString account;
    QString password;
    std::optional<QJsonObject> vcodeInfo;
    std::optional<QJsonObject> dualfactorauthinfo;
};

struct LoginAnswer {
    bool answered = true; ///< false: the server replied with something that is neither a session nor an error
    QBError error;
    ServerReply reply;
};

/// Server calls of the login windows: made on the background pool, answered on the main thread. Each ends exactly once,
/// or not at all when `context` dies first. The client must outlive the calls.
namespace LoginCalls
{

void signIn(QBNetworking &networking, QObject *context, const LoginRequest &request,
            std::function<void(const LoginAnswer &)> then);

/// Has a second-factor code sent.
void requestCode(QBNetworking &networking, QObject *context, const QString &account, const QString &password,
                 const QString &oldtelnum, bool authbysms, bool authbyemail,
                 std::function<void(const LoginAnswer &)> then);

/// Picture code; with a null uuid a fresh one.
void pictureCode(QBNetworking &networking, QObject *context, const QString &uuid,
                 std::function<void(const LoginAnswer &)> then);

} // namespace LoginCalls
