#pragma once

#include "login/ShowUpdateVersionDelegate.h"
#include "platform/Dispatch.h"
#include "shell/LoginFlow.h"
#include "shell/QuickStart.h"
#include "shell/ServerCheck.h"
#include "shell/ServiceClient.h"
#include "shell/ServiceProcess.h"
#include "shell/ServiceWatch.h"
#include "shell/SessionWindows.h"
#include "shell/ShellContext.h"
#include "shell/StatusItem.h"
#include "shell/StatusMenu.h"
#include "shell/Termination.h"
#include "shell/UpdateFlow.h"
#include "update/DownloadDelegates.h"

#include <QObject>

#include <utility>

/// The application's one controller: decides the order of things and hands each duty to the part that knows it. Main
/// thread. Nothing here blocks; what waits for a server, a process or a volume goes on when the answer is there.
class AppDelegate : public QObject, public ShowUpdateVersionDelegate, public UpdateDownloadProgressDelegate
{
    Q_OBJECT
public:
    explicit AppDelegate(shell::ShellContext context = shell::ShellContext::ofApplication());
    ~AppDelegate() override;

    // Start.
    void applicationDidFinishLaunching();
    void addObservers();
    void initialMenu();
    void comfirmLogin();
    /// A later launch, or a click on the application's own icon.
    void applicationShouldHandleReopen();
    /// What this process was started with, without the program name.
    void handleArguments(const QStringList &arguments);

    // Sign-in.
    void showLoginWindowAllowAutoLogin(bool allow);
    void showServerSettingWindowWithCode(int code);
    void showServerSettingWindowWithErrorLocalizedDescription(const QString &description);
    void handleLoginStatusDidChanged();
    void userProtocolShowVolume();
    void addChangePasswordMenuItem();

    // Service.
    void showQuillboxVolume();
    void checkServiceRunning();
    bool serviceRunning() const;
    void handleServiceDidStop();
    void handleQuillboxFuseServiceWillStop();
    void closeQuillboxVolume();
    void logoutOnService();
    void logoutOnManager();
    void removeSidebarVolume(const QString &name);
    void registerClient();
    void registerAppleEvent();
    /// Runs the script behind the name; `then` gets false when the script is missing or printed anything.
    void relaunchFinder(std::function<void(bool)> then);
    void reopenQuillbox();

    // End. `terminate` may ask and be refused; the other way neither asks nor waits long.
    void terminate();
    void terminateWithoutAsking();
    void applicationWillTerminate();

    // Update. `fromServerSetting`: the server window is showing, which is where the other question comes from.
    void showUpdateQBVersionWindow(bool fromServerSetting);
    void showUpdateVersionWindow(bool) override { showUpdateQBVersionWindow(true); }
    // From the installer's thread; the work is done on the main one.
    void updateDownloadAppProgress(double percent) override;
    void doSthDownloadAppVersionComplete() override;
    void doSthDownloadEroor() override;

    // Menu.
    void showQuillboxWindow() { showQuillboxVolume(); }
    void showQuillboxWeb();
    void showTransferWindow();
    void showDirectUploadPanel();
    void showContentSearchWindow();
    void showSearchWindow();
    void showPreferenceWindow();
    void openMyFavorites();
    void helpSubMenu_QuickStart();
    void helpSubMenu_HelpOnline();
    void helpSubMenu_TrainOnline();
    void changePassword();
    void performLogout();
    void performQuitApp();
    bool validateUserInterfaceItem(int tag) const;
    bool ValidateShowQuillboxWindow() const { return serviceRunning(); }
    bool ValidateShowPreferenceWindow() const { return serviceRunning(); }
    bool ValidatePerformLogout() const { return serviceRunning(); }
    bool ValidatePerformQuitApp() const { return true; }
    bool ValidateShowQuillboxWeb() const { return serviceRunning(); }
    bool ValidateShowSearchWindow() const { return serviceRunning(); }

    // Parts that others may look at.
    shell::LoginFlow &loginFlow() { return flow; }
    shell::StatusMenu &statusMenu() { return menu; }
    shell::StatusItem &statusItem() { return item; }
    bool isWatchingService() const { return watch.isWatching(); }

private:
    void awakeFromNib();
    void prepareFonts();
    void continueLaunch();
    void followServerCheck(const shell::ServerCheckOutcome &outcome);
    QBWindowController *visibleWindow() const;
    void addRunTimeEntries(const ServerReply &user, const ServerReply &config);
    void removeRunTimeEntries();
    void openHelp(const QString &key);
    void endSessionAtServer();
    void finish();

    /// Work there, result here, for the session as it is now: with its end `then` is dropped.
    template <class Work, class Then> void inSession(Work work, Then then)
    {
        platform::inBackground(this, std::move(work),
                               [this, current = session, then = std::move(then)](const auto &result) {
                                   if (current == session)
                                       then(result);
                               });
    }

    shell::ShellContext context;
    shell::ServiceProcess service;
    shell::ServiceWatch watch;
    shell::ServiceClient client;
    shell::FontSetup fonts;
    shell::DriverSetup driver;
    shell::Termination termination;
    shell::ServerCheck serverCheck;
    shell::LoginFlow flow;
    shell::QuickStart quickStart;
    shell::UpdateFlow updateFlow;
    shell::StatusMenu menu;
    shell::StatusItem item;
    shell::SessionWindows windows;
    quint64 session = 0;   ///< counts sign-ins and sign-outs, so that late replies of an earlier one are dropped
    bool launched = false; ///< the start has come to the server check
    bool willTerminate = false;
};
