#include "ConnectionThreads.h"

#include <system_error>

namespace documentserver
{

void ConnectionThreads::enqueue(std::function<void()> job)
{
    const std::lock_guard lock(mutex);
    jobs.push_back(std::move(job));
    if (jobs.size() > idle && threads.size() < mostThreads)
        addThread();
    wake.notify_one();
}

/// Where the system has no more threads to give, the threads that there are take all connections in turn.
void ConnectionThreads::addThread()
{
    try {
        threads.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        if (threads.empty())
            throw;
    }
}

void ConnectionThreads::shutdown()
{
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake.notify_all();
    for (std::thread &thread : threads)
        thread.join();
}

/// Waiting jobs are run even at the end: each owns a connection that it has to close.
void ConnectionThreads::work()
{
    std::unique_lock lock(mutex);
    while (true) {
        ++idle;
        wake.wait(lock, [this] { return !jobs.empty() || ending; });
        --idle;
        if (jobs.empty())
            return;
        const auto job = std::move(jobs.front());
        jobs.pop_front();
        lock.unlock();
        job();
        lock.lock();
    }
}

} // namespace documentserver
