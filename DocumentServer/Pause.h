#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace documentserver
{

/// Artificial waiting that ends early when the server stops.
class Pause
{
public:
    void wait(std::chrono::milliseconds duration)
    {
        std::unique_lock lock(mutex);
        if (duration.count() > 0)
            wake.wait_for(lock, duration, [this] { return ended; });
    }

    void end()
    {
        const std::lock_guard lock(mutex);
        ended = true;
        wake.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable wake;
    bool ended = false;
};

} // namespace documentserver
