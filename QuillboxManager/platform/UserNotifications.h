#pragma once

#include <QString>

namespace platform
{

/// Short messages that the desktop shows beside the user's work, also while this application is in front.
class UserNotifications
{
public:
    virtual ~UserNotifications() = default;
    /// Plain text. Returns at once; on a desktop that shows none a log line takes its place. Main thread.
    virtual void schedule(const QString &title, const QString &informativeText) = 0;
};

} // namespace platform
