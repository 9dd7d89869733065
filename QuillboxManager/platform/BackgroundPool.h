#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace platform
{

/// Threads for blocking jobs. A job that finds no idle thread gets a new one, up to `maximumThreads`; a thread that
/// stays idle ends. Jobs start in the order they came. Any thread. Destroying the object drops what is queued and
/// leaves running jobs alone.
class BackgroundPool
{
public:
    explicit BackgroundPool(std::size_t maximumThreads = 64);
    ~BackgroundPool();
    BackgroundPool(const BackgroundPool &) = delete;
    BackgroundPool &operator=(const BackgroundPool &) = delete;

    void run(std::function<void()> job);

    /// Takes no job from now on, drops the queued ones and waits for the running ones. False when some still run.
    bool drain(std::chrono::milliseconds patience);

private:
    /// Shared with the threads, which may outlive the pool.
    struct State {
        std::mutex mutex;
        std::condition_variable jobCame;
        std::condition_variable jobEnded;
        std::deque<std::function<void()>> queue;
        std::size_t threads = 0;
        std::size_t idle = 0;
        std::size_t running = 0;
        bool closed = false;
    };
    static void work(const std::shared_ptr<State> &state);

    const std::size_t maximumThreads;
    const std::shared_ptr<State> state;
};

} // namespace platform
