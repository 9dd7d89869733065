#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace documentserver
{

/// Gives every connection a thread of its own, up to a limit, and makes threads only as they are needed: a connection
/// that is slow or idle never holds up another one. Connections beyond the limit wait for a free thread.
class ConnectionThreads : public httplib::TaskQueue
{
public:
    explicit ConnectionThreads(size_t limit) : mostThreads(limit) {}

    void enqueue(std::function<void()> job) override;
    void shutdown() override;

private:
    void addThread();
    void work();

    const size_t mostThreads;
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> jobs;
    std::vector<std::thread> threads;
    size_t idle = 0;
    bool ending = false;
};

} // namespace documentserver
