#pragma once

#include "api/QBNetworking.h"

#include <functional>

class QObject;

/// Server calls of the server-settings window: made on the background pool, answered on the main thread, or not at all
/// when `context` dies first. The client must outlive the calls.
namespace ServerSettingCalls
{

/// Looks for the server and makes it the stored one; `then` gets the number of a ServerConfigResult.
void configure(QBNetworking &networking, QObject *context, const QString &address, const QString &port,
               std::function<void(int code)> then);

/// Does the server still accept this version?
void checkClientVersion(QBNetworking &networking, QObject *context,
                        std::function<void(const QBError &, const ServerReply &)> then);

/// Two paths, see QBNetworking::pingStoredServer.
void pingStoredServer(QBNetworking &networking, QObject *context, bool apiFamily,
                      std::function<void(bool answered)> then);

} // namespace ServerSettingCalls
