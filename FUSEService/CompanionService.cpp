#include "CompanionService.h"

#include "CompanionStrings.h"
#include "channel/GDUnixSocketClient.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/Log.h"
#include "state/NotificationNames.h"
#include "state/QBGlobeInformation.h"

using platform::log;

CompanionService::CompanionService(QBGlobeInformation &sessionRecord,
                                   platform::DistributedNotificationCenter &notifications, const QString &path,
                                   std::function<bool()> mount, QObject *parent)
    : QObject(parent), session(sessionRecord), distributed(notifications), socketPath(path),
      mountVolume(std::move(mount)), receiver(std::make_shared<MessageReceiver>())
{
}

CompanionService::~CompanionService()
{
    stop();
}

int CompanionService::start()
{
    if (!session.isLogin()) {
        log(QStringLiteral("FUSEService: nobody is signed in, so there is nothing to serve"));
        return CompanionStrings::NotSignedIn;
    }
    if (!listen())
        return CompanionStrings::NoSocket;
    if (!mountVolume()) {
        stop();
        return CompanionStrings::NoVolume;
    }
    distributed.addObserver(this, DistributedNotificationNames::stopQuillboxFuseService(),
                            [this](const platform::Notification &) { Q_EMIT stopRequested(); });
    distributed.post(DistributedNotificationNames::registerServerSucess());
    log(QStringLiteral("FUSEService: ready"));
    return CompanionStrings::Stopped;
}

bool CompanionService::socketIsAlive() const
{
    const auto probe = GDUnixSocketClient::initWithSocketPath(socketPath);
    return probe && probe->connectWithAutoRead(false);
}

bool CompanionService::listen()
{
    server = GDUnixSocketServer::initWithSocketPath(socketPath);
    if (!server) {
        log(QStringLiteral("FUSEService: %1 cannot be a socket").arg(socketPath));
        return false;
    }
    if (socketIsAlive()) {
        log(QStringLiteral("FUSEService: another one serves %1").arg(socketPath));
        server.reset();
        return false;
    }
    // Nobody answers there, so what stands at the path was left behind.
    QBError error = server->unlinkSocket();
    server->setDelegate(receiver);
    if (!error && server->listenWithError(&error))
        return true;
    log(QStringLiteral("FUSEService: cannot listen: %1").arg(error.localizedDescription()));
    server.reset();
    return false;
}

void CompanionService::stop()
{
    receiver->setHandler(nullptr);
    if (server)
        server->close();
    server.reset();
}
