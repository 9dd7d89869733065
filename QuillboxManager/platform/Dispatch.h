#pragma once

#include <QObject>
#include <QPointer>

#include <chrono>
#include <functional>
#include <type_traits>
#include <utility>

namespace platform
{

/// Runs `work` on the background pool. Callable from any thread. Blocking work (server calls, digests, process waits)
/// belongs here; the pool grows with blocked jobs, so one slow server does not hold up the next call.
void dispatchGlobal(std::function<void()> work);

/// Runs `work` on the main thread, later, never inside this call. Callable from any thread. Dropped when `context`, a
/// main-thread object, is gone by then.
void dispatchMain(QPointer<QObject> context, std::function<void()> work);

/// As `dispatchMain`, after `delay`. To be called on the main thread.
void dispatchAfter(std::chrono::milliseconds delay, QObject *context, std::function<void()> work);

/// Work there, then result here: `work()` runs on the background pool and its result reaches `then` on the main thread.
/// To be called on the main thread. Ends exactly once, or not at all when `context` dies first.
template <class Work, class Then> void inBackground(QObject *context, Work work, Then then)
{
    dispatchGlobal([guard = QPointer<QObject>(context), work = std::move(work), then = std::move(then)]() mutable {
        if constexpr (std::is_void_v<std::invoke_result_t<Work &>>) {
            work();
            dispatchMain(guard, std::move(then));
        } else {
            dispatchMain(guard, [then = std::move(then), result = work()]() mutable { then(std::move(result)); });
        }
    });
}

/// Tells the pool that the process is about to end: queued jobs are dropped, running ones get at most `patience` to
/// finish. False when some still run; the caller then leaves the process without waiting for them.
bool drainBackground(std::chrono::milliseconds patience);

} // namespace platform
