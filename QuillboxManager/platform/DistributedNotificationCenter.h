#pragma once

#include "platform/NotificationCenter.h"

namespace platform
{

/// Notifications between the processes of one user. Main thread. A host without the means (no session bus) logs that
/// once and drops what is posted; nothing else is affected.
class DistributedNotificationCenter
{
public:
    virtual ~DistributedNotificationCenter() = default;

    /// The handler runs on the main thread until `observer` is destroyed. Notifications of this process arrive too.
    virtual void addObserver(QObject *observer, const QString &name, NotificationHandler handler) = 0;

    /// Hands the notification to the host; it is on its way when this returns, also when the process ends right after.
    virtual void post(const QString &name, const QVariantMap &userInfo = {}) = 0;
};

} // namespace platform
