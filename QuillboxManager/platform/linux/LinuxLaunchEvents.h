#pragma once

#include "platform/Host.h"

#include <QObject>

#include <chrono>
#include <memory>

class QDBusConnection;

namespace platform
{

class SessionBus;

/// Launches meet on the session bus: the first instance owns the name "com.velto.quillbox" and offers the object below.
/// Main thread.
class LinuxLaunchEvents final : public LaunchEvents
{
public:
    /// `startUpPatience`: how long a hand-over waits for a first instance that runs but does not listen yet.
    explicit LinuxLaunchEvents(SessionBus &sessionBus,
                               std::chrono::milliseconds startUpPatience = std::chrono::seconds(2));
    ~LinuxLaunchEvents() override;

    void listen(QObject *observer, Handlers handlers) override;
    bool handOver(const QStringList &arguments) override;
    bool firstInstanceListens() override;

private:
    class Receiver;
    void offer(QDBusConnection connection);
    bool waitForFirstInstance();

    SessionBus &bus;
    const std::chrono::milliseconds patience;
    std::unique_ptr<Receiver> receiver; ///< from `listen` on
};

} // namespace platform
