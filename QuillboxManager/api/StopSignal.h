#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <set>

/// Ends the blocking calls it was given to, from another thread and at once; later calls with it end before they begin.
/// Stays set for good. Outlives the calls. Any thread.
class StopSignal
{
public:
    StopSignal() = default;
    StopSignal(const StopSignal &) = delete;
    StopSignal &operator=(const StopSignal &) = delete;

    void stop();
    bool isStopped() const { return stopped; }

    /// While it lives, stop() calls `wakeUp`, on the stopping thread; null signals are never stopped.
    class Listener
    {
    public:
        Listener(StopSignal *signal, std::function<void()> wakeUp);
        ~Listener();
        Listener(const Listener &) = delete;
        Listener &operator=(const Listener &) = delete;

    private:
        friend class StopSignal;
        StopSignal *const signal;
        const std::function<void()> wakeUp;
    };

private:
    std::atomic<bool> stopped{false};
    std::mutex mutex; ///< guards what follows
    std::set<Listener *> listeners;
};
