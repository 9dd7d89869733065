#include "platform/Task.h"

#include "platform/linux/Spawn.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <sys/wait.h>
#include <thread>

namespace platform
{

namespace
{

/// What the task and the thread that waits for the child share. The child is reaped under the lock, so that its number
/// stays its own as long as `ended` is false.
struct ChildState {
    std::mutex mutex;
    pid_t pid = -1;
    bool ended = false;
};

void waitForEnd(const std::shared_ptr<ChildState> &state)
{
    siginfo_t information = {};
    while (::waitid(P_PID, static_cast<id_t>(state->pid), &information, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    std::lock_guard lock(state->mutex);
    ::waitpid(state->pid, nullptr, 0);
    state->ended = true;
}

class ChildTask final : public Task
{
public:
    explicit ChildTask(std::shared_ptr<ChildState> child) : state(std::move(child)) {}

    bool isRunning() const override
    {
        std::lock_guard lock(state->mutex);
        if (state->ended)
            return false;
        // The waiting thread may not have come to its turn yet.
        siginfo_t information = {};
        const int options = WEXITED | WNOWAIT | WNOHANG;
        return ::waitid(P_PID, static_cast<id_t>(state->pid), &information, options) == 0 && information.si_pid == 0;
    }

    qint64 processId() const override { return state->pid; }

    void terminate() override { signal(SIGTERM); }
    void kill() override { signal(SIGKILL); }

private:
    void signal(int number)
    {
        std::lock_guard lock(state->mutex);
        if (!state->ended)
            ::kill(state->pid, number);
    }

    const std::shared_ptr<ChildState> state;
};

/// Null when the program cannot be started.
std::shared_ptr<ChildState> start(const QString &program, const QStringList &arguments, const SpawnOptions &options)
{
    const auto state = std::make_shared<ChildState>();
    state->pid = spawn(program, arguments, options);
    if (state->pid < 0)
        return nullptr;
    std::thread(waitForEnd, state).detach();
    return state;
}

} // namespace

std::unique_ptr<Task> Task::launch(const QString &program, const QStringList &arguments)
{
    const std::shared_ptr<ChildState> state = start(program, arguments, {});
    return state ? std::make_unique<ChildTask>(state) : nullptr;
}

bool launchDetached(const QString &program, const QStringList &arguments)
{
    return start(program, arguments, {.detached = true}) != nullptr;
}

} // namespace platform
