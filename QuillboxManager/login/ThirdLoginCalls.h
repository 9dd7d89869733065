#pragma once

#include "api/QBNetworking.h"
#include "login/LoginCalls.h"
#include "login/ThirdLoginRules.h"

/// Server calls of the single-sign-on window: made on the background pool, answered on the main thread. Each ends
/// exactly once, or not at all when `context` dies first. The client must outlive the calls.
namespace ThirdLoginCalls
{

/// Hands over the address that marks a return from the authenticator, null when the server names none or is not there.
void readMatchUrl(QBNetworking &networking, QObject *context, std::function<void(const QString &)> then);

/// Signs in with what was seen; not for a sighting of nothing.
void signIn(QBNetworking &networking, QObject *context, const ThirdLoginRules::Sighting &sighting,
            const QString &userName, const QString &authID, std::function<void(const LoginAnswer &)> then);

} // namespace ThirdLoginCalls
