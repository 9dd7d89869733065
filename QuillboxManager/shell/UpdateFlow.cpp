#include "shell/UpdateFlow.h"

#include "platform/Dispatch.h"
#include "shell/LoginFlow.h"
#include "shell/VisibleWindow.h"
#include "ui/Application.h"
#include "update/DownloadApp.h"
#include "update/UpdateWindowController.h"
#include "update/updateProgressWindowController.h"

#include <utility>

namespace shell
{

UpdateFlow::UpdateFlow(QBNetworking &client, const platform::Bundle &application,
                       std::function<DownloadApp &()> installerMaker, UpdateDownloadProgressDelegate &progressReceiver,
                       LoginFlow &windows)
    : networking(client), bundle(application), makeInstaller(std::move(installerMaker)),
      progressDelegate(progressReceiver), flow(windows)
{
}

UpdateFlow::~UpdateFlow()
{
    if (!installer)
        return;
    installer->setUpdateDownloadProgressDelegate(nullptr);
    installer->setDownloadProgressWindowAndServerSettingWindowDelegate(nullptr);
}

void UpdateFlow::showUpdateQBVersionWindow(bool fromServerSetting)
{
    if (!prompt)
        prompt = std::make_unique<UpdateWindowController>(networking, bundle);
    Application::activate();
    prompt->runModalForWindow([this, fromServerSetting](int result) {
        if (result == UpdateWindowController::UpdateNow)
            update();
        else
            goOnWithoutUpdate(fromServerSetting);
    });
}

void UpdateFlow::update()
{
    if (!progress)
        progress = std::make_unique<updateProgressWindowController>();
    progress->setProgress(0);
    installer = &makeInstaller();
    installer->setUpdateDownloadProgressDelegate(&progressDelegate);
    flow.ensureServerSettingWindow();
    installer->setDownloadProgressWindowAndServerSettingWindowDelegate(this);
    installer->downloadVersion();
    progress->showWindow();
}

void UpdateFlow::goOnWithoutUpdate(bool fromServerSetting)
{
    if (fromServerSetting)
        flow.serverWindowDisappear();
    else
        flow.showLoginWindowAllowAutoLogin(true);
}

void UpdateFlow::showProgress(double percent)
{
    if (progress)
        progress->setProgress(percent);
}

void UpdateFlow::closeProgress()
{
    if (progress)
        progress->close();
}

void UpdateFlow::DisplayServerSettingWindow(const QString &text)
{
    platform::dispatchMain(this, [this, text] { flow.displayInServerSettingWindow(text); });
}

QBWindowController *UpdateFlow::visibleWindow() const
{
    return firstVisible({prompt.get(), progress.get()});
}

} // namespace shell
