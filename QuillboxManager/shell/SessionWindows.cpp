#include "shell/SessionWindows.h"

#include "login/UserProtocolWindowController.h"
#include "platform/Host.h"
#include "shell/LoginFlow.h"
#include "shell/SearchWindowsController.h"
#include "shell/ServiceClient.h"
#include "shell/SettingWindowsController.h"
#include "shell/ShellContext.h"
#include "shell/VisibleWindow.h"

namespace shell
{

SessionWindows::SessionWindows(const ShellContext &shellContext, LoginFlow &loginFlow)
    : context(shellContext), flow(loginFlow)
{
}

SessionWindows::~SessionWindows() = default;

void SessionWindows::showAgreement(const QString &text)
{
    closeAgreement();
    agreement = std::make_unique<UserProtocolWindowController>(context.networking, context.center);
    agreement->showWindow();
    agreement->loadUserProtocol(text);
    agreement->center();
}

void SessionWindows::closeAgreement()
{
    if (!agreement)
        return;
    agreement->close();
    // Its button may be what brought us here.
    agreement.release()->deleteLater();
}

void SessionWindows::showSearch()
{
    if (!search)
        search =
            std::make_unique<SearchWindowsController>(ServiceClient::socketPathIn(context.host.folders.temporary()));
    search->showWindow();
}

void SessionWindows::showSettings()
{
    if (!settings)
        settings = context.makeSettings({.close = [&windows = flow] { windows.closeChangePasswordWindow(); },
                                         .show = [&windows = flow] { windows.showChangePasswordWindow(); },
                                         .present = context.present});
    settings->showGeneralPane();
}

void SessionWindows::close()
{
    search.reset();
    settings.reset();
    closeAgreement();
}

QBWindowController *SessionWindows::visibleWindow() const
{
    return firstVisible({agreement.get(), settings.get(), search.get()});
}

} // namespace shell
