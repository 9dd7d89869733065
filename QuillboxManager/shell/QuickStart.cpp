#include "shell/QuickStart.h"

#include "login/JsonValues.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"
#include "shell/WebClientAddress.h"

namespace shell
{

QuickStart::QuickStart(QBNetworking &client, platform::Workspace &desktop, const QString &version, QObject *parent)
    : QObject(parent), networking(client), workspace(desktop), clientVersion(version)
{
}

void QuickStart::openIfNeeded()
{
    platform::inBackground(
        this,
        [&client = networking] {
            QBError error;
            const ServerReply config = client.getConfig(&error);
            return config && JsonValues::boolean(*config, ShellStrings::needQuickStartKey());
        },
        [this](bool needed) {
            if (!needed)
                return;
            const QString page = platform::localizedString(ShellStrings::quickStartURL());
            workspace.openURL(QUrl(helpAddress(page, clientVersion)));
            platform::dispatchGlobal([&client = networking] { client.setquickstartstatus(nullptr); });
        });
}

} // namespace shell
