#pragma once

#include "platform/Task.h"

#include <QString>

#include <memory>

namespace platform
{
class Bundle;
}

namespace shell
{

/// The companion process of this manager. It lives on when this object goes; it watches the manager by itself. Main
/// thread.
class ServiceProcess
{
public:
    /// The companion's executable in the bundle's resources; it need not exist.
    static QString executableIn(const platform::Bundle &bundle);

    explicit ServiceProcess(const QString &program) : executable(program) {}

    bool isRunning() const { return serviceTask && serviceTask->isRunning(); }
    /// Starts it with this process' id as its one argument. False, after a log line, when it is missing or will not
    /// start.
    bool launch();
    /// Ends it without asking.
    void kill();

private:
    const QString executable;
    std::unique_ptr<platform::Task> serviceTask;
};

} // namespace shell
