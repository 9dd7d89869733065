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
    client = GDUnixSocketClient::initWithSocketPath(socketPath);
    if (!client) {
        logFailure(GDUnixSocketErrors::gduds_errorForCode(GDUnixSocketErrors::BadSocket));
        return;
    }
    client->connectWithAutoRead(true, [](const QBError &error) {
        if (error)
            logFailure(error);
    });
}

void ServiceClient::sendDicDataForKey(const QString &key, const QString &text)
{
    if (client)
        client->writeData(SocketMessage{key, text}.bytes(), GDUnixSocket::WriteCompletion());
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
