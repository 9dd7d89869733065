#pragma once

#include "platform/Bundle.h"
#include "update/DownloadDelegates.h"

#include <QObject>

#include <functional>
#include <memory>

class DownloadApp;
class QBNetworking;
class QBWindowController;
class UpdateWindowController;
class updateProgressWindowController;

namespace shell
{
class LoginFlow;

/// Owns the windows of an update and leads from the question to the download and on. Main thread, but for
/// DisplayServerSettingWindow.
class UpdateFlow : public QObject, public DownloadProgressWindowAndServerSettingWindowDelegate
{
public:
    /// `installer` is asked for when the user first wants an update. The references outlive the object; `progress` is
    /// told by the installer itself, off the main thread.
    UpdateFlow(QBNetworking &networking, const platform::Bundle &bundle, std::function<DownloadApp &()> installer,
               UpdateDownloadProgressDelegate &progress, LoginFlow &flow);
    /// The installer tells nobody any more.
    ~UpdateFlow() override;

    /// `fromServerSetting`: the server window is showing, and goes when the user puts the update off.
    void showUpdateQBVersionWindow(bool fromServerSetting);

    void showProgress(double percent);
    void closeProgress();
    /// Any thread: says in the server window why there is no update.
    void DisplayServerSettingWindow(const QString &text) override;

    /// One that is on the screen, else null.
    QBWindowController *visibleWindow() const;

private:
    void update();
    void goOnWithoutUpdate(bool fromServerSetting);

    QBNetworking &networking;
    const platform::Bundle bundle;
    const std::function<DownloadApp &()> makeInstaller;
    UpdateDownloadProgressDelegate &progressDelegate;
    LoginFlow &flow;
    DownloadApp *installer = nullptr;
    std::unique_ptr<UpdateWindowController> prompt;
    std::unique_ptr<updateProgressWindowController> progress;
};

} // namespace shell
