#include "channel/WriteQueue.h"

#include "platform/Dispatch.h"

#include <utility>

void WriteQueue::append(std::function<void()> write)
{
    {
        const std::lock_guard lock(mutex);
        waiting.push_back(std::move(write));
        if (std::exchange(running, true))
            return;
    }
    platform::dispatchGlobal([self = shared_from_this()] { self->run(); });
}

void WriteQueue::run()
{
    for (;;) {
        std::function<void()> write;
        {
            const std::lock_guard lock(mutex);
            if (waiting.empty()) {
                running = false;
                return;
            }
            write = std::move(waiting.front());
            waiting.pop_front();
        }
        write();
    }
}
