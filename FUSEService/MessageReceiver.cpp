#include "MessageReceiver.h"

#include "platform/Log.h"

void MessageReceiver::setHandler(Handler given)
{
    const std::lock_guard lock(handling);
    handler = std::move(given);
}

void MessageReceiver::didReceiveData(GDUnixSocketServer &, const QByteArray &data, const QString &clientID)
{
    QList<SocketMessage> messages;
    {
        const std::lock_guard lock(mutex);
        messages = splitters[clientID].feed(data);
    }
    const std::lock_guard lock(handling);
    for (const SocketMessage &message : messages) {
        platform::log(
            QStringLiteral("received %1 of %2 characters").arg(message.key.left(32)).arg(message.text.size()));
        if (handler)
            handler(message);
    }
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
    const std::lock_guard lock(mutex);
    splitters.remove(clientID);
}
