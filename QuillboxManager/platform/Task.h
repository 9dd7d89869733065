#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

namespace platform
{

struct TaskResult {
    bool started = false; ///< false: there is no such program or it may not be run
    int status = -1;      ///< exit status, -1 when it ended by a signal, did not start or ran over its time
    QByteArray output;    ///< standard output, at most 1 MiB; standard error is not captured
};

/// Runs a program to its end and blocks the calling thread, so not for the main thread. Over `timeout` the program is
/// killed. Arguments go to the program as they stand, through no shell. Standard input is empty.
TaskResult runTask(const QString &program, const QStringList &arguments,
                   std::chrono::milliseconds timeout = std::chrono::minutes(2));

/// Starts a program that goes on whatever becomes of this process: in a session of its own, with "/" as its working
/// folder and the null device as its three standard streams, the only descriptors it gets. It inherits the environment.
/// False when it cannot be started.
bool launchDetached(const QString &program, const QStringList &arguments);

/// A child process that runs beside this one. Its state may be asked from any thread at any time without an event loop;
/// the end of the child is noticed at once and the child is reaped. Destroying the object leaves the child running.
class Task
{
public:
    virtual ~Task() = default;

    virtual bool isRunning() const = 0;
    virtual qint64 processId() const = 0;
    /// Asks the child to end (SIGTERM). Nothing happens when it has ended.
    virtual void terminate() = 0;
    /// Ends the child without asking, also one that is stopped.
    virtual void kill() = 0;

    /// Null when the program cannot be started. The child inherits no descriptor but the standard three.
    static std::unique_ptr<Task> launch(const QString &program, const QStringList &arguments);
};

} // namespace platform
