#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

/// Runs the writes of one socket on the background pool, one after the other in the order they came. A peer that never
/// reads occupies one thread of the pool at most. Any thread.
class WriteQueue : public std::enable_shared_from_this<WriteQueue>
{
public:
    void append(std::function<void()> write);

private:
    void run();

    std::mutex mutex;
    std::deque<std::function<void()>> waiting;
    bool running = false;
};
