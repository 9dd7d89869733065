#pragma once

#include <functional>

/// Runs an endless, blocking loop on a thread of its own: loops would use up the background pool, whose threads are
/// limited. False when the system has no thread left. The thread ends with the loop; nobody waits for it.
bool startLoopThread(std::function<void()> loop);
