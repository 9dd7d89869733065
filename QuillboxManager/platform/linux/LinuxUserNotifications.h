#pragma once

#include "platform/UserNotifications.h"

namespace platform
{

class SessionBus;

/// Over the desktop's notification service on the session bus.
class LinuxUserNotifications final : public UserNotifications
{
public:
    explicit LinuxUserNotifications(SessionBus &sessionBus) : bus(sessionBus) {}

    void schedule(const QString &title, const QString &informativeText) override;

private:
    SessionBus &bus;
};

} // namespace platform
