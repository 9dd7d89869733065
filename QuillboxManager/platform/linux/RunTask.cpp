#include "platform/Task.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/Spawn.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace platform
{

namespace
{

constexpr qsizetype longestOutput = 1024 * 1024;

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

Pipe makePipe()
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return {};
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// Takes what the pipe holds now. False when nobody can write to it any more.
bool takeOutput(int pipe, QByteArray &output)
{
    char buffer[16384];
    for (;;) {
        const ssize_t count = ::read(pipe, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 && errno == EAGAIN;
        output.append(buffer, std::min<qsizetype>(count, longestOutput - output.size()));
    }
}

bool hasEnded(pid_t child)
{
    siginfo_t information = {};
    return ::waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOWAIT | WNOHANG) != 0 ||
           information.si_pid != 0;
}

/// Collects output until the child itself ends; something that it left behind may keep the pipe open for ever. False
/// when the time is over first.
bool collect(pid_t child, int output, QByteArray &collected, QDeadlineTimer deadline)
{
    const FileDescriptor childEnd(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    pollfd watched[2] = {{childEnd.get(), POLLIN, 0}, {output, POLLIN, 0}};
    constexpr qint64 slice = 20; // for a system without descriptors of processes
    while (!hasEnded(child)) {
        if (deadline.hasExpired())
            return false;
        const qint64 left = std::min<qint64>(deadline.remainingTime(), 60'000);
        ::poll(watched, 2, static_cast<int>(childEnd.isOpen() ? left + 1 : std::min(left + 1, slice)));
        if (watched[1].revents != 0 && !takeOutput(output, collected))
            watched[1].fd = -1;
    }
    if (watched[1].fd >= 0)
        takeOutput(output, collected);
    return true;
}

} // namespace

TaskResult runTask(const QString &program, const QStringList &arguments, std::chrono::milliseconds timeout)
{
    TaskResult result;
    Pipe pipe = makePipe();
    if (!pipe.reading.isOpen())
        return result;
    const pid_t child = spawn(program, arguments, {.standardOutput = pipe.writing.get(), .ownGroup = true});
    pipe.writing.close();
    if (child < 0)
        return result;
    result.started = true;
    const bool ended = collect(child, pipe.reading.get(), result.output, QDeadlineTimer(timeout));
    if (!ended)
        ::kill(-child, SIGKILL); // with everything it started
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (ended && WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    return result;
}

} // namespace platform
