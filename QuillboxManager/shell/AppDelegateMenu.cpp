#include "shell/AppDelegate.h"

#include "login/JsonValues.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "shell/PasswordControl.h"
#include "shell/ShellStrings.h"
#include "shell/VersionComparison.h"
#include "shell/WebClientAddress.h"
#include "state/NotificationNames.h"
#include "state/QBGlobeInformation.h"

// The controller's menu, its entries and what they do.

using namespace Qt::StringLiterals;

namespace
{
constexpr int RunTimeEntryIndex = 7;
constexpr qint64 FirstVersionWithFavorites = 6;

QString menuTitle(const QString &key)
{
    return platform::localizedString(key, ShellStrings::menuTable());
}

qint64 serverVersion(const ServerReply &config)
{
    return config ? shell::leadingInteger(JsonValues::text(*config, ShellStrings::serverVersionKey())) : 0;
}

/// Blocks. Nothing when the server cannot be reached.
std::optional<QString> askForWebClientAddress(QBNetworking &networking)
{
    if (!networking.reachability())
        return std::nullopt;
    const QJsonObject host = networking.getHostInfo().value_or(QJsonObject());
    const QBGlobeAccount account = networking.globeInformation().account();
    return shell::webClientAddress({.server = networking.serverAddress(),
                                    .https = JsonValues::boolean(host, ShellStrings::httpsKey()),
                                    .port = JsonValues::text(host, ShellStrings::portKey()),
                                    .serverVersion = serverVersion(networking.getServerConfig()),
                                    .userID = account.userID,
                                    .tokenID = account.tokenID});
}
} // namespace

void AppDelegate::awakeFromNib()
{
    using namespace shell;
    const auto act = [this](void (AppDelegate::*action)()) { return [this, action] { (this->*action)(); }; };
    menu.addEntry({u"showQuillboxWindow"_s, menuTitle(u"JwH-8K-t3P.title"_s), ShowQuillboxWindowTag,
                   act(&AppDelegate::showQuillboxWindow)});
    menu.addEntry({u"showQuillboxWeb"_s, menuTitle(u"ghO-sy-2oG.title"_s), ShowQuillboxWebTag,
                   act(&AppDelegate::showQuillboxWeb)});
    menu.addEntry({u"showTransferWindow"_s, menuTitle(u"Synchronization.title"_s), ShowTransferWindowTag,
                   act(&AppDelegate::showTransferWindow)});
    menu.addEntry(
        {u"showDirectUploadPanel"_s, u"文件直传"_s, ShowTransferWindowTag, act(&AppDelegate::showDirectUploadPanel)});
    menu.addEntry({u"showSearchWindow"_s, menuTitle(u"Search.title"_s), ShowSearchWindowTag,
                   act(&AppDelegate::showSearchWindow)});
    menu.addEntry(
        {u"showContentSearchWindow"_s, u"搜索"_s, ShowTransferWindowTag, act(&AppDelegate::showContentSearchWindow)});
    menu.addEntry({u"showPreferenceWindow"_s, menuTitle(u"Setting.title"_s), ShowPreferenceWindowTag,
                   act(&AppDelegate::showPreferenceWindow)});
    menu.addSubmenu({u"helpMenu"_s, menuTitle(u"Help.title"_s)},
                    {{u"helpSubMenu_QuickStart"_s, menuTitle(u"QuickStart.title"_s), NoTag,
                      act(&AppDelegate::helpSubMenu_QuickStart)},
                     {u"helpSubMenu_HelpOnline"_s, menuTitle(u"OnlineHelp.title"_s), NoTag,
                      act(&AppDelegate::helpSubMenu_HelpOnline)},
                     {u"helpSubMenu_TrainOnline"_s, menuTitle(u"OnlineTrain.title"_s), NoTag,
                      act(&AppDelegate::helpSubMenu_TrainOnline)}});
    menu.addEntry(
        {u"performLogout"_s, menuTitle(u"Logout.title"_s), PerformLogoutTag, act(&AppDelegate::performLogout)});
    menu.addEntry(
        {u"performQuitApp"_s, menuTitle(u"Exit.title"_s), PerformQuitAppTag, act(&AppDelegate::performQuitApp)});
}

void AppDelegate::initialMenu()
{
    menu.validate();
    item.show();
}

bool AppDelegate::validateUserInterfaceItem(int tag) const
{
    switch (tag) {
    case shell::ShowQuillboxWindowTag:
    case shell::ShowTransferWindowTag:
        return ValidateShowQuillboxWindow();
    case shell::ShowPreferenceWindowTag:
        return ValidateShowPreferenceWindow();
    case shell::PerformLogoutTag:
        return ValidatePerformLogout();
    case shell::PerformQuitAppTag:
        return ValidatePerformQuitApp();
    case shell::ShowQuillboxWebTag:
        return ValidateShowQuillboxWeb();
    case shell::ShowSearchWindowTag:
        return ValidateShowSearchWindow();
    default:
        return true;
    }
}

void AppDelegate::addChangePasswordMenuItem()
{
    struct Answers {
        ServerReply user;
        ServerReply config;
    };
    const auto ask = [&networking = context.networking] {
        return Answers{networking.requestUserInfo(), networking.getServerConfig()};
    };
    inSession(ask, [this](const Answers &answers) { addRunTimeEntries(answers.user, answers.config); });
}

void AppDelegate::addRunTimeEntries(const ServerReply &user, const ServerReply &config)
{
    const QString userType = user ? JsonValues::text(*user, ShellStrings::userTypeKey()) : QString();
    if (userType == QLatin1String("1"))
        menu.insertEntry(RunTimeEntryIndex,
                         {u"changePassword"_s, platform::localizedString(ShellStrings::changePasswordTitle()),
                          shell::NoTag, [this] { changePassword(); }, u"ChangePassword"_s});
    if (serverVersion(config) >= FirstVersionWithFavorites)
        menu.insertEntry(RunTimeEntryIndex,
                         {u"openMyFavorites"_s, platform::localizedString(ShellStrings::favoritesTitle()), shell::NoTag,
                          [this] { openMyFavorites(); }, u"favorites"_s});
}

void AppDelegate::removeRunTimeEntries()
{
    menu.removeEntriesTitled(platform::localizedString(ShellStrings::changePasswordTitle()));
    menu.removeEntriesTitled(platform::localizedString(ShellStrings::favoritesTitle()));
}

void AppDelegate::showQuillboxWeb()
{
    inSession([&networking = context.networking] { return askForWebClientAddress(networking); },
              [this](const std::optional<QString> &address) {
                  if (address)
                      context.host.workspace.openSecretURL(QUrl(*address));
                  else
                      context.present(
                          QBAlert::defaultQBAlertWithShowsSuppressionButton(false, QBError::errorForNetBreak()),
                          [](int) {});
              });
}

void AppDelegate::showTransferWindow()
{
    context.host.distributed.post(DistributedNotificationNames::callTransferWindow());
}

void AppDelegate::showDirectUploadPanel()
{
    context.host.distributed.post(DistributedNotificationNames::showDirctUploadPanel());
}

void AppDelegate::showContentSearchWindow()
{
    context.host.distributed.post(DistributedNotificationNames::showSearchWindow());
}

void AppDelegate::showSearchWindow()
{
    windows.showSearch();
}

void AppDelegate::showPreferenceWindow()
{
    if (serviceRunning())
        windows.showSettings();
    else
        showLoginWindowAllowAutoLogin(false);
}

void AppDelegate::openMyFavorites()
{
    context.host.distributed.post(DistributedNotificationNames::openMyFavorites());
}

void AppDelegate::openHelp(const QString &key)
{
    const QString page = platform::localizedString(key);
    context.host.workspace.openURL(QUrl(shell::helpAddress(page, context.bundle.shortVersion())));
}

void AppDelegate::helpSubMenu_QuickStart()
{
    openHelp(ShellStrings::quickStartURL());
}

void AppDelegate::helpSubMenu_HelpOnline()
{
    openHelp(ShellStrings::onlineHelp());
}

void AppDelegate::helpSubMenu_TrainOnline()
{
    context.host.workspace.openURL(QUrl(platform::localizedString(ShellStrings::onlineTrain())));
}

void AppDelegate::changePassword()
{
    flow.closeChangePasswordWindow();
    inSession([&networking = context.networking] { return networking.requestUserInfo(); },
              [this](const ServerReply &user) {
                  if (!user)
                      return;
                  if (shell::isPasswordControlled(*user))
                      context.present(shell::passwordControlAlert(), [](int) {});
                  else
                      flow.showChangePasswordWindow();
              });
}

void AppDelegate::performLogout()
{
    // The companion may end, and somebody sign in anew, while the user is asked.
    termination.checkIfUserWannaUmount([this, current = session](bool mayEnd) {
        if (!mayEnd)
            platform::log(QStringLiteral("取消注销"));
        else if (current == session)
            logoutOnService();
    });
}

void AppDelegate::performQuitApp()
{
    platform::dispatchMain(this, [this] { terminate(); });
}

void AppDelegate::showUpdateQBVersionWindow(bool fromServerSetting)
{
    platform::dispatchMain(this,
                           [this, fromServerSetting] { updateFlow.showUpdateQBVersionWindow(fromServerSetting); });
}

void AppDelegate::updateDownloadAppProgress(double percent)
{
    platform::dispatchMain(this, [this, percent] { updateFlow.showProgress(percent); });
}

void AppDelegate::doSthDownloadAppVersionComplete()
{
    platform::dispatchMain(this, [this] {
        updateFlow.closeProgress();
        terminate();
    });
}

void AppDelegate::doSthDownloadEroor()
{
    platform::dispatchMain(this, [this] { updateFlow.closeProgress(); });
}
