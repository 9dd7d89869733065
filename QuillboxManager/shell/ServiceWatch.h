#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

namespace shell
{

/// Looks every two seconds whether the companion still runs. Main thread.
class ServiceWatch : public QObject
{
public:
    /// `stopped` runs once per watch, after which the watch stays suspended until it is resumed.
    ServiceWatch(std::function<bool()> serviceRunning, std::function<void()> stopped,
                 std::chrono::milliseconds interval = std::chrono::seconds(2), QObject *parent = nullptr);

    /// Resumes the watch; the first look follows at once.
    void checkServiceRunning();
    void suspend();
    bool isWatching() const { return timer.isActive(); }

private:
    void look();

    const std::function<bool()> serviceRunning;
    const std::function<void()> stopped;
    QTimer timer;
};

} // namespace shell
