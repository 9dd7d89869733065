#include "update/UpdatePlaces.h"

#include "platform/Host.h"

UpdatePlaces UpdatePlaces::ofHost()
{
    const platform::Host &host = platform::host();
    return {
        .downloads = host.folders.home() + QStringLiteral("/Downloads"),
        .installerCopy = host.folders.caches() + QStringLiteral("/com.velto.appInstall/appInstall.app"),
        .volumes = host.folders.volumes(),
        .diskImageTool = host.scripts.diskImageTool(),
        .bundle = platform::Bundle::main(),
    };
}
