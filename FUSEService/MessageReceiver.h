#pragma once

#include "channel/GDUnixSocketServer.h"
#include "channel/SocketMessage.h"

#include <QHash>

#include <functional>
#include <mutex>

/// Takes what the manager's windows send. Called on the connections' threads; logs key and length of each message and
/// never its text.
class MessageReceiver : public GDUnixSocketServerDelegate
{
public:
    /// Called on the connections' threads, one message at a time; null from now on: a call in progress has ended.
    using Handler = std::function<void(const SocketMessage &message)>;
    void setHandler(Handler handler);

    void didReceiveData(GDUnixSocketServer &server, const QByteArray &data, const QString &clientID) override;
    void didFailToReadForClientID(GDUnixSocketServer &server, const QString &clientID, const QBError &error) override;
    void clientWithIDDidDisconnect(GDUnixSocketServer &server, const QString &clientID) override;

private:
    void forget(const QString &clientID);

    std::mutex mutex;
    QHash<QString, SocketMessageSplitter> splitters; ///< by connection
    std::mutex handling;                             ///< guards the handler, also while it works
    Handler handler;
};
