#include "shell/ServiceWatch.h"

#include <utility>

namespace shell
{

ServiceWatch::ServiceWatch(std::function<bool()> running, std::function<void()> onStop,
                           std::chrono::milliseconds interval, QObject *parent)
    : QObject(parent), serviceRunning(std::move(running)), stopped(std::move(onStop))
{
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(interval);
    connect(&timer, &QTimer::timeout, this, &ServiceWatch::look);
}

void ServiceWatch::checkServiceRunning()
{
    if (timer.isActive())
        return;
    timer.start();
    QTimer::singleShot(0, this, &ServiceWatch::look);
}

void ServiceWatch::suspend()
{
    timer.stop();
}

void ServiceWatch::look()
{
    if (!timer.isActive() || serviceRunning())
        return;
    suspend();
    stopped();
}

} // namespace shell
