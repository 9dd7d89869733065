#include "api/StopSignal.h"

void StopSignal::stop()
{
    const std::lock_guard lock(mutex);
    stopped = true;
    for (Listener *listener : listeners)
        listener->wakeUp();
}

StopSignal::Listener::Listener(StopSignal *stopSignal, std::function<void()> wake)
    : signal(stopSignal), wakeUp(std::move(wake))
{
    if (!signal)
        return;
    const std::lock_guard lock(signal->mutex);
    signal->listeners.insert(this);
}

StopSignal::Listener::~Listener()
{
    if (!signal)
        return;
    const std::lock_guard lock(signal->mutex);
    signal->listeners.erase(this);
}
