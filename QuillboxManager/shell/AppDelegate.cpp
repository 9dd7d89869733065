#include "shell/AppDelegate.h"

#include "api/QBNetworking.h"
#include "platform/Host.h"
#include "platform/LaunchRequest.h"
#include "platform/Log.h"
#include "platform/Task.h"
#include "shell/LoginSuccess.h"
#include "shell/ShellStrings.h"
#include "shell/VisibleWindow.h"
#include "state/NotificationNames.h"
#include "ui/Application.h"
#include "ui/StyleKit.h"
#include "update/AppUpdateFlag.h"

#include <utility>

namespace
{
/// How long an end without questions waits for the volume to be detached.
constexpr std::chrono::milliseconds DetachPatience{3000};

/// Waits for the script: background pool only. Nothing when it cannot be run.
std::optional<QByteArray> runAppleScript(const platform::Scripts &scripts, const QString &script)
{
    QStringList command = scripts.appleScriptCommand(script, {});
    if (command.isEmpty())
        return std::nullopt;
    const QString program = command.takeFirst();
    return platform::runTask(program, command).output;
}

QString volumePath(const platform::Host &host)
{
    return host.folders.volumes() + u'/' + ShellStrings::sidebarName();
}
} // namespace

AppDelegate::AppDelegate(shell::ShellContext given)
    : context(std::move(given)), service(shell::ServiceProcess::executableIn(context.bundle)),
      watch([this] { return serviceRunning(); }, [this] { handleServiceDidStop(); }, context.serviceWatchInterval),
      client(
          shell::ServiceClient::socketPathIn(context.host.folders.temporary()), [this] { return serviceRunning(); },
          context.forwardingRetry),
      fonts(shell::FontSetup::placesFor(context.bundle, context.host.folders), context.fontNames),
      driver(
          context.host, context.bundle, volumePath(context.host), context.present, [this] { terminate(); },
          context.driverPauses),
      termination(
          shell::VolumeControl(context.host.volumes), volumePath(context.host), [this] { return serviceRunning(); },
          context.present),
      serverCheck(context.networking, context.defaults),
      flow(context.networking, context.center, context.windows, *this),
      quickStart(context.networking, context.bundle.shortVersion(),
                 [&workspace = context.host.workspace](const QUrl &address) { workspace.openURL(address); }),
      updateFlow(context.networking, context.bundle, context.installer, *this, flow),
      menu([this](int tag) { return validateUserInterfaceItem(tag); }), item(*menu.menu(), context.makeTrayHost()),
      windows(context, flow)
{
    awakeFromNib();
    Application::setTerminateHandler([this] { terminate(); });
    context.networking.setServiceErrorReporter([this](const QBError &error) {
        context.present(QBAlert::defaultQBAlertWithShowsSuppressionButton(false, error), [](int) {});
    });
}

AppDelegate::~AppDelegate()
{
    context.networking.setServiceErrorReporter(nullptr);
    Application::setTerminateHandler(nullptr);
}

void AppDelegate::applicationDidFinishLaunching()
{
    if (!context.earlySteps)
        context.earlySteps = shell::EarlySteps::begin(context.host, context.bundle);
    driver.useEarlyLook(context.earlySteps->driver);
    platform::inBackground(
        this, [registered = context.earlySteps->registered] { registered.wait(); }, [this] { prepareFonts(); });
    // Meanwhile, what the first window needs anyway.
    registerAppleEvent();
    StyleKit::warmUp();
}

void AppDelegate::prepareFonts()
{
    fonts.prepare([this] { driver.checkFuseInstalled([this] { continueLaunch(); }); });
}

void AppDelegate::continueLaunch()
{
    addObservers();
    initialMenu();
    launched = true;
    comfirmLogin();
}

void AppDelegate::addObservers()
{
    flow.addObservers();
    context.center.addObserver(this, NotificationNames::loginSuccess(),
                               [this](const platform::Notification &) { handleLoginStatusDidChanged(); });
    context.center.addObserver(this, NotificationNames::userProtocolShowVolume(),
                               [this](const platform::Notification &) { userProtocolShowVolume(); });
    context.host.distributed.addObserver(this, DistributedNotificationNames::registerServerSucess(),
                                         [this](const platform::Notification &) { registerClient(); });
}

void AppDelegate::comfirmLogin()
{
    serverCheck.comfirmLogin([this](const shell::ServerCheckOutcome &outcome) { followServerCheck(outcome); });
}

void AppDelegate::followServerCheck(const shell::ServerCheckOutcome &outcome)
{
    using Step = shell::ServerCheckOutcome::Step;
    switch (outcome.step) {
    case Step::ServerWindowWithCode:
        showServerSettingWindowWithCode(outcome.code);
        break;
    case Step::ServerWindowWithError:
        Application::activate();
        showServerSettingWindowWithErrorLocalizedDescription(outcome.text);
        break;
    case Step::UpdatePrompt:
        showUpdateQBVersionWindow(false);
        break;
    case Step::Login:
        showLoginWindowAllowAutoLogin(true);
        break;
    }
}

void AppDelegate::registerAppleEvent()
{
    context.host.launchEvents.listen(this,
                                     {.reopen = [this] { applicationShouldHandleReopen(); },
                                      .openURL = [this](const QString &url) { client.handleAppleEvent(url); },
                                      .serviceText = [this](const QString &text) { client.handleSearchQBFile(text); }});
}

void AppDelegate::applicationShouldHandleReopen()
{
    QBWindowController *visible = visibleWindow();
    const bool signedIn = launched && context.networking.isLogin();
    if (visible)
        visible->showWindow();
    else if (signedIn)
        showQuillboxVolume();
    // Nothing else leads to the menu on a desktop without a tray, and a launch always shows something.
    if (!item.hasIcon() || (!visible && !signedIn))
        item.showMenuWindow();
}

QBWindowController *AppDelegate::visibleWindow() const
{
    return shell::firstVisible(
        {updateFlow.visibleWindow(), windows.visibleWindow(), flow.visibleWindow(), quickStart.visibleWindow()});
}

void AppDelegate::handleArguments(const QStringList &arguments)
{
    using Kind = platform::LaunchRequest::Kind;
    for (const platform::LaunchRequest &request : platform::launchRequests(arguments)) {
        if (request.kind == Kind::OpenURL)
            client.handleAppleEvent(request.text);
        else if (request.kind == Kind::ServiceText)
            client.handleSearchQBFile(request.text);
    }
}

void AppDelegate::showLoginWindowAllowAutoLogin(bool allow)
{
    flow.showLoginWindowAllowAutoLogin(allow);
}

void AppDelegate::showServerSettingWindowWithCode(int code)
{
    flow.showServerSettingWindowWithCode(code);
}

void AppDelegate::showServerSettingWindowWithErrorLocalizedDescription(const QString &description)
{
    flow.showServerSettingWindowWithErrorLocalizedDescription(description);
}

void AppDelegate::handleLoginStatusDidChanged()
{
    ++session;
    flow.closeLoginWindow();
    inSession([&networking = context.networking] { return shell::askForAgreement(networking); },
              [this](const std::optional<QString> &text) {
                  if (text)
                      windows.showAgreement(*text);
                  else
                      userProtocolShowVolume();
              });
}

void AppDelegate::userProtocolShowVolume()
{
    windows.closeAgreement();
    showQuillboxVolume();
    addChangePasswordMenuItem();
}

void AppDelegate::showQuillboxVolume()
{
    if (service.isRunning()) {
        reopenQuillbox();
        return;
    }
    if (!service.launch())
        return;
    // The watch does not wait for the introduction: its answer may take as long as a server does.
    quickStart.openIfNeeded();
    checkServiceRunning();
}

void AppDelegate::checkServiceRunning()
{
    menu.validate();
    watch.checkServiceRunning();
}

bool AppDelegate::serviceRunning() const
{
    return service.isRunning();
}

void AppDelegate::handleServiceDidStop()
{
    watch.suspend();
    logoutOnManager();
    removeSidebarVolume(ShellStrings::sidebarName());
}

void AppDelegate::handleQuillboxFuseServiceWillStop()
{
    platform::log(QStringLiteral("handleQuillboxFuseServiceWillStop"));
}

void AppDelegate::closeQuillboxVolume()
{
    context.host.distributed.post(DistributedNotificationNames::stopQuillboxFuseService());
}

void AppDelegate::logoutOnService()
{
    closeQuillboxVolume();
    // One that hangs, or is no longer what was started, would keep the user signed in for ever.
    platform::dispatchAfter(context.serviceStopPatience, this, [this, current = session] {
        if (current == session && serviceRunning())
            service.kill();
    });
}

void AppDelegate::logoutOnManager()
{
    ++session;
    if (serviceRunning()) {
        platform::inBackground(
            this, [&networking = context.networking] { networking.logoutCurrentAccountWithHandle([] {}); },
            [this] { showLoginWindowAllowAutoLogin(false); });
        return;
    }
    context.networking.deleteCookies();
    showLoginWindowAllowAutoLogin(false);
    windows.close();
    flow.closeChangePasswordWindow();
    quickStart.close();
    client.close();
    removeRunTimeEntries();
    menu.validate();
    endSessionAtServer();
}

void AppDelegate::endSessionAtServer()
{
    // Nobody waits for the answer, and the next sign-in may be faster.
    platform::dispatchGlobal([&networking = context.networking, token = context.networking.tokenID()] {
        if (networking.tokenID() == token)
            networking.logoutCurrentAccountWithHandle({});
    });
}

void AppDelegate::removeSidebarVolume(const QString &)
{
    // Whoever asks, the entry is always this one.
    context.host.sidebar.removeFirstNamed(ShellStrings::sidebarName());
}

void AppDelegate::registerClient()
{
    client.registerClient();
}

void AppDelegate::reopenQuillbox()
{
    const QString script =
        context.bundle.pathForResource(ShellStrings::reopenScript(), ShellStrings::appleScriptType());
    if (!script.isNull())
        platform::dispatchGlobal([&scripts = context.host.scripts, script] { runAppleScript(scripts, script); });
}

void AppDelegate::relaunchFinder(std::function<void(bool)> then)
{
    const QString script =
        context.bundle.pathForResource(ShellStrings::relaunchFinderScript(), ShellStrings::appleScriptType());
    platform::inBackground(
        this,
        [&scripts = context.host.scripts, script] {
            const std::optional<QByteArray> output = script.isNull() ? std::nullopt : runAppleScript(scripts, script);
            return output && output->isEmpty();
        },
        std::move(then));
}

void AppDelegate::terminate()
{
    termination.applicationShouldTerminate([this](bool mayEnd) {
        if (mayEnd)
            finish();
    });
}

void AppDelegate::terminateWithoutAsking()
{
    termination.detachQuietly([this] { finish(); });
    platform::dispatchAfter(DetachPatience, this, [this] { finish(); });
}

void AppDelegate::finish()
{
    applicationWillTerminate();
    context.endEventLoop();
}

void AppDelegate::applicationWillTerminate()
{
    if (std::exchange(willTerminate, true))
        return;
    watch.suspend();
    setShownUpdateWindow(context.bundle, false);
    closeQuillboxVolume();
    removeSidebarVolume(ShellStrings::sidebarName());
}
