#include "MessageReceiver.h"

#include "platform/Log.h"

void MessageReceiver::didReceiveData(GDUnixSocketServer &, const QByteArray &data, const QString &clientID)
{
    QList<SocketMessage> messages;
    {
        const QMutexLocker lock(&mutex);
        messages = splitters[clientID].feed(data);
    }
    for (const SocketMessage &message : messages)
        platform::log(
            QStringLiteral("received %1 of %2 characters").arg(message.key.left(32)).arg(message.text.size()));
}

void MessageReceiver::didFailToReadForClientID(GDUnixSocketServer &, const QString &clientID, const QBError &)
{
    forget(clientID);
}

void MessageReceiver::clientWithIDDidDisconnect(GDUnixSocketServer &, const QString &clientID)
{
    forget(clientID);
}

void MessageReceiver::forget(const QString &clientID)
{
    const QMutexLocker lock(&mutex);
    splitters.remove(clientID);
}
