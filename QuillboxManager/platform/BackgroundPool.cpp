#include "platform/BackgroundPool.h"

#include <system_error>
#include <thread>
#include <utility>

namespace platform
{

namespace
{
constexpr std::chrono::seconds idleLife(10);
}

BackgroundPool::BackgroundPool(std::size_t threadLimit) : maximumThreads(threadLimit), state(std::make_shared<State>())
{
}

BackgroundPool::~BackgroundPool()
{
    drain(std::chrono::milliseconds::zero());
}

void BackgroundPool::run(std::function<void()> job)
{
    std::lock_guard lock(state->mutex);
    if (state->closed)
        return;
    state->queue.push_back(std::move(job));
    if (state->idle >= state->queue.size() || state->threads >= maximumThreads) {
        state->jobCame.notify_one();
        return;
    }
    try {
        std::thread(work, state).detach();
        ++state->threads;
    } catch (const std::system_error &) {
        // The system has no thread left: one of the existing ones gets to the job later.
        if (state->threads == 0)
            throw;
    }
}

void BackgroundPool::work(const std::shared_ptr<State> &state)
{
    std::unique_lock lock(state->mutex);
    for (;;) {
        ++state->idle;
        const bool woken =
            state->jobCame.wait_for(lock, idleLife, [&] { return state->closed || !state->queue.empty(); });
        --state->idle;
        if (!woken || state->queue.empty())
            break;
        std::function<void()> job = std::move(state->queue.front());
        state->queue.pop_front();
        ++state->running;
        lock.unlock();
        job();
        job = nullptr; // what the job holds is released outside the lock
        lock.lock();
        --state->running;
        state->jobEnded.notify_all();
    }
    --state->threads;
}

bool BackgroundPool::drain(std::chrono::milliseconds patience)
{
    std::deque<std::function<void()>> dropped;
    std::unique_lock lock(state->mutex);
    state->closed = true;
    dropped.swap(state->queue);
    state->jobCame.notify_all();
    const bool ended = state->jobEnded.wait_for(lock, patience, [&] { return state->running == 0; });
    lock.unlock();
    return ended;
}

} // namespace platform
