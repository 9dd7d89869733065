#include "channel/LoopThread.h"

#include <system_error>
#include <thread>
#include <utility>

bool startLoopThread(std::function<void()> loop)
{
    try {
        std::thread(std::move(loop)).detach();
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}
