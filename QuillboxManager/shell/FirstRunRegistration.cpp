#include "shell/FirstRunRegistration.h"

#include "platform/Host.h"
#include "platform/Task.h"
#include "shell/ShellStrings.h"

namespace shell
{

FirstRunRegistration::FirstRunRegistration(const platform::Scripts &hostScripts, const platform::Bundle &mainBundle,
                                           const Branding &brandingFile)
    : scripts(hostScripts), bundle(mainBundle), branding(brandingFile)
{
}

bool FirstRunRegistration::registerOnce() const
{
    if (branding.contains(ShellStrings::brandingFirst()))
        return false;
    const QString extension = bundle.builtInPlugInsPath() + u'/' + ShellStrings::finderExtension();
    platform::runTask(scripts.extensionTool(), {ShellStrings::extensionToolAdd(), extension});
    branding.setValue(ShellStrings::brandingFirst(), ShellStrings::brandingFirstDone());
    return true;
}

} // namespace shell
