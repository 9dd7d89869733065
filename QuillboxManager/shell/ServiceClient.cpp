#include "shell/ServiceClient.h"

#include "channel/GDUnixSocketClient.h"
#include "channel/SocketMessage.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "shell/ShellStrings.h"

#include <QUrl>

#include <utility>

namespace shell
{

namespace
{
constexpr qsizetype MostWaiting = 64;

void logFailure(const QBError &error)
{
    platform::log(platform::fillPlaceholders(QStringLiteral("Quillbox[Fuse] Could not start client error:%@"),
                                             {error.localizedDescription()}));
}
} // namespace

ServiceClient::ServiceClient(const QString &path, std::function<bool()> running, std::chrono::milliseconds delay,
                             QObject *parent)
    : QObject(parent), socketPath(path), serviceRunning(std::move(running)), retryDelay(delay)
{
}

ServiceClient::~ServiceClient()
{
    if (client)
        client->close();
}

QString ServiceClient::socketPathIn(const QString &temporaryFolder)
{
    if (!temporaryFolder.isNull())
        return temporaryFolder + u'/' + ShellStrings::serviceSocket();
    platform::log(QStringLiteral("Quillbox[Fuse] No folder for the socket"));
    return {};
}

void ServiceClient::registerClient()
{
    if (client)
        client->close();
    connected = false;
    client = GDUnixSocketClient::initWithSocketPath(socketPath);
    if (!client) {
        logFailure(GDUnixSocketErrors::gduds_errorForCode(GDUnixSocketErrors::BadSocket));
        return;
    }
    const auto connect = [made = client] {
        QBError error;
        made->connectWithAutoRead(true, &error);
        return error;
    };
    platform::inBackground(this, connect, [this, made = client](const QBError &error) {
        if (made == client)
            didConnect(error);
    });
}

void ServiceClient::didConnect(const QBError &error)
{
    connected = error.isNull();
    if (!connected)
        logFailure(error);
    for (const QByteArray &message : std::exchange(waiting, {}))
        if (connected)
            client->writeData(message, GDUnixSocket::WriteCompletion());
}

void ServiceClient::close()
{
    if (client)
        client->close();
    client.reset();
    connected = false;
    waiting.clear();
}

void ServiceClient::sendDicDataForKey(const QString &key, const QString &text)
{
    const QByteArray message = SocketMessage{key, text}.bytes();
    if (connected)
        client->writeData(message, GDUnixSocket::WriteCompletion());
    else if (waiting.size() < MostWaiting)
        waiting.append(message);
}

void ServiceClient::sendWhenRunning(const QString &key, const QString &text)
{
    if (serviceRunning()) {
        sendDicDataForKey(key, text);
        return;
    }
    platform::dispatchAfter(retryDelay, this, [this, key, text] {
        if (serviceRunning())
            sendDicDataForKey(key, text);
    });
}

void ServiceClient::handleAppleEvent(const QString &url)
{
    sendWhenRunning(SocketMessage::appEvent(), QUrl::fromPercentEncoding(url.toUtf8()));
}

void ServiceClient::handleSearchQBFile(const QString &text)
{
    sendWhenRunning(SocketMessage::rightService(), text);
}

} // namespace shell
