#include "shell/EarlySteps.h"

#include "platform/Bundle.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "shell/FirstRunRegistration.h"
#include "shell/ShellStrings.h"

#include <QThread>

#include <memory>

namespace shell
{

namespace
{
void registerFirstRun(platform::Host &host, const platform::Bundle &bundle)
{
    for (const platform::RunningApplication &leftOver :
         host.workspace.runningApplications(ShellStrings::serviceIdentifier()))
        host.workspace.terminate(leftOver);
    const QString branding = bundle.pathForResource(QStringLiteral("QBOEM"), QStringLiteral("plist"));
    FirstRunRegistration(host.scripts, bundle, Branding(branding)).registerOnce();
}
} // namespace

EarlySteps EarlySteps::begin(platform::Host &host, const platform::Bundle &bundle)
{
    QThread::currentThread(); // the first thread that asks becomes the main one
    struct Promises {
        std::promise<void> registered;
        std::promise<DriverState> driver;
    };
    const auto promises = std::make_shared<Promises>();
    platform::dispatchGlobal([&host, bundle, promises] {
        registerFirstRun(host, bundle);
        promises->registered.set_value();
    });
    platform::dispatchGlobal(
        [&host, bundle, promises] { promises->driver.set_value(DriverSetup::lookAtDriver(host, bundle)); });
    return {promises->registered.get_future().share(), promises->driver.get_future().share()};
}

} // namespace shell
