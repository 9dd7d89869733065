#pragma once

#include "channel/GDUnixSocketServer.h"
#include "channel/SocketMessage.h"

#include <QHash>
#include <QMutex>

/// Takes what the manager's windows send. Called on the connections' threads; logs key and length of each message and
/// never its text.
class MessageReceiver : public GDUnixSocketServerDelegate
{
public:
    void didReceiveData(GDUnixSocketServer &server, const QByteArray &data, const QString &clientID) override;
    void didFailToReadForClientID(GDUnixSocketServer &server, const QString &clientID, const QBError &error) override;
    void clientWithIDDidDisconnect(GDUnixSocketServer &server, const QString &clientID) override;

private:
    void forget(const QString &clientID);

    QMutex mutex;
    QHash<QString, SocketMessageSplitter> splitters; ///< by connection
};
