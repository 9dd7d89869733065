#include "shell/ServiceProcess.h"

#include "platform/Bundle.h"
#include "platform/Log.h"
#include "shell/ShellStrings.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace shell
{

QString ServiceProcess::executableIn(const platform::Bundle &bundle)
{
    const QString service =
        bundle.pathForResource(ShellStrings::serviceResource(), ShellStrings::serviceResourceType());
    return service.isNull() ? QString() : service + u'/' + ShellStrings::serviceExecutable();
}

bool ServiceProcess::launch()
{
    if (executable.isNull() || !QFileInfo::exists(executable)) {
        platform::log(QStringLiteral("ERROR: can't find FUSEService!"));
        return false;
    }
    serviceTask = platform::Task::launch(executable, {QString::number(QCoreApplication::applicationPid())});
    if (!serviceTask)
        platform::log(QStringLiteral("ERROR: can't start FUSEService!"));
    return serviceTask != nullptr;
}

void ServiceProcess::kill()
{
    if (serviceTask)
        serviceTask->kill();
}

} // namespace shell
