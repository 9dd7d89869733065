#pragma once

#include "MessageReceiver.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QBGlobeInformation;
namespace platform
{
class DistributedNotificationCenter;
}

/// The companion's work between start and stop: serves the local socket for the signed-in user, has the volume mounted
/// and announces both. Main thread.
class CompanionService : public QObject
{
    Q_OBJECT
public:
    /// `mountVolume` says whether the volume is there, after a log line when it is not.
    CompanionService(QBGlobeInformation &session, platform::DistributedNotificationCenter &distributed,
                     const QString &socketPath, std::function<bool()> mountVolume, QObject *parent = nullptr);
    ~CompanionService() override;

    /// Who takes the manager's messages, on the connections' threads, until `stop`.
    void setMessageHandler(MessageReceiver::Handler handler) { receiver->setHandler(std::move(handler)); }
    /// 0 when it serves; otherwise the exit code, after a log line that says why.
    int start();
    /// Closes the connections and removes the socket.
    void stop();

Q_SIGNALS:
    /// The manager asks the service to end.
    void stopRequested();

private:
    /// Somebody answers at the socket.
    bool socketIsAlive() const;
    bool listen();

    QBGlobeInformation &session;
    platform::DistributedNotificationCenter &distributed;
    const QString socketPath;
    const std::function<bool()> mountVolume;
    const std::shared_ptr<MessageReceiver> receiver;
    std::shared_ptr<GDUnixSocketServer> server;
};
