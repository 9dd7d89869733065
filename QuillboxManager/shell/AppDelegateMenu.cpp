#include "shell/AppDelegate.h"

#include "login/JsonValues.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "shell/AppUpdateFlag.h"
#include "shell/ShellStrings.h"
#include "shell/VersionComparison.h"
#include "shell/WebClientAddress.h"
#include "state/NotificationNames.h"
#include "state/QBGlobeInformation.h"

#include <QAction>

// The controller's menu, its entries and what they do.

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
    // Entries without an action keep the place of what the companion does not offer yet.
    menu.addEntry({QStringLiteral("showQuillboxWindow"), menuTitle(QStringLiteral("Disk.title")), ShowQuillboxWindowTag,
                   act(&AppDelegate::showQuillboxWindow)});
    menu.addEntry({QStringLiteral("showQuillboxWeb"), menuTitle(QStringLiteral("Safari.title")), ShowQuillboxWebTag,
                   act(&AppDelegate::showQuillboxWeb)});
    menu.addEntry({QStringLiteral("showTransferWindow"), menuTitle(QStringLiteral("Synchronization.title")),
                   ShowTransferWindowTag, nullptr});
    menu.addEntry({QStringLiteral("showDirectUploadPanel"), menuTitle(QStringLiteral("文件直传")), NoTag, nullptr});
    menu.addEntry(
        {QStringLiteral("showSearchWindow"), menuTitle(QStringLiteral("Search.title")), ShowSearchWindowTag, nullptr});
    menu.addEntry(
        {QStringLiteral("showContentSearchWindow"), menuTitle(QStringLiteral("SearchMenu.titile")), NoTag, nullptr});
    menu.addEntry({QStringLiteral("showPreferenceWindow"), menuTitle(QStringLiteral("Setting.title")),
                   ShowPreferenceWindowTag, nullptr});
    menu.addSubmenu(QStringLiteral("helpMenu"), menuTitle(QStringLiteral("Help.title")),
                    {{QStringLiteral("helpSubMenu_QuickStart"), menuTitle(QStringLiteral("QuickStart.title")), NoTag,
                      act(&AppDelegate::helpSubMenu_QuickStart)},
                     {QStringLiteral("helpSubMenu_HelpOnline"), menuTitle(QStringLiteral("OnlineHelp.title")), NoTag,
                      act(&AppDelegate::helpSubMenu_HelpOnline)},
                     {QStringLiteral("helpSubMenu_TrainOnline"), menuTitle(QStringLiteral("OnlineTrain.title")), NoTag,
                      act(&AppDelegate::helpSubMenu_TrainOnline)}});
    menu.addEntry({QStringLiteral("performLogout"), menuTitle(QStringLiteral("Logout.title")), PerformLogoutTag,
                   act(&AppDelegate::performLogout)});
    menu.addEntry({QStringLiteral("performQuitApp"), menuTitle(QStringLiteral("Exit.title")), PerformQuitAppTag,
                   act(&AppDelegate::performQuitApp)});
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
    platform::inBackground(this, ask, [this, current = session](const Answers &answers) {
        if (current == session)
            addRunTimeEntries(answers.user, answers.config);
    });
}

void AppDelegate::addRunTimeEntries(const ServerReply &user, const ServerReply &config)
{
    const QString userType = user ? JsonValues::text(*user, ShellStrings::userTypeKey()) : QString();
    if (userType == QLatin1String("1")) {
        std::function<void()> action;
        if (flow.canChangePassword())
            action = [this] { changePassword(); };
        menu.insertEntry(RunTimeEntryIndex,
                         {QStringLiteral("changePassword"),
                          platform::localizedString(ShellStrings::changePasswordTitle()), shell::NoTag, action});
    }
    if (serverVersion(config) >= FirstVersionWithFavorites)
        menu.insertEntry(RunTimeEntryIndex,
                         {QStringLiteral("openMyFavorites"), platform::localizedString(ShellStrings::favoritesTitle()),
                          shell::NoTag, nullptr});
}

void AppDelegate::removeRunTimeEntries()
{
    menu.removeEntriesTitled(platform::localizedString(ShellStrings::changePasswordTitle()));
    menu.removeEntriesTitled(platform::localizedString(ShellStrings::favoritesTitle()));
}

void AppDelegate::showQuillboxWeb()
{
    platform::inBackground(
        this, [&networking = context.networking] { return askForWebClientAddress(networking); },
        [this](const std::optional<QString> &address) {
            if (address)
                context.host.workspace.openSecretURL(QUrl(*address));
            else
                context.present(QBAlert::defaultQBAlertWithShowsSuppressionButton(false, QBError::errorForNetBreak()),
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
    platform::inBackground(
        this, [&networking = context.networking] { return networking.requestUserInfo(); },
        [this, current = session](const ServerReply &user) {
            if (!user || current != session)
                return;
            if (JsonValues::text(*user, ShellStrings::passwordControlKey()) == QLatin1String("1"))
                showPasswordControlAlert();
            else
                flow.showChangePasswordWindow();
        });
}

void AppDelegate::showPasswordControlAlert()
{
    constexpr qint64 NoticeCode = 1000;
    const QBError notice = QBError::withText(QBError::serverDomain(), NoticeCode,
                                             platform::localizedString(ShellStrings::passwordControlText()));
    QBAlert::Alert alert = QBAlert::make(QMessageBox::Information, notice.localizedDescription());
    QBAlert::addButton(*alert, platform::localizedString(ShellStrings::okTitle()));
    context.present(std::move(alert), [](int) {});
}

void AppDelegate::performLogout()
{
    termination.checkIfUserWannaUmount([this](bool mayEnd) {
        if (mayEnd)
            logoutOnService();
        else
            platform::log(QStringLiteral("取消注销"));
    });
}

void AppDelegate::performQuitApp()
{
    platform::dispatchMain(this, [this] { terminate(); });
}

void AppDelegate::showUpdateQBVersionWindow(bool fromServerSetting)
{
    platform::dispatchMain(this, [this, fromServerSetting] {
        updatePrompt.show(
            context.networking.dicUpdateVersion(), context.bundle.shortVersion(),
            [this, fromServerSetting](shell::UpdateChoice choice) { followUpdateChoice(choice, fromServerSetting); });
    });
}

void AppDelegate::followUpdateChoice(shell::UpdateChoice choice, bool fromServerSetting)
{
    const ServerReply answer = context.networking.dicUpdateVersion();
    shell::setShownUpdateWindow(
        context.bundle.pathForResource(ShellStrings::updateStateResource(), ShellStrings::updateStateType()), true);
    if (choice == shell::UpdateChoice::Update)
        context.host.workspace.openURL(shell::downloadPage(answer));
    if (shell::updateAnswer(answer) == shell::UpdateAnswer::Forced)
        terminate();
    else
        goOnWithoutUpdate(fromServerSetting);
}

void AppDelegate::goOnWithoutUpdate(bool fromServerSetting)
{
    if (fromServerSetting)
        flow.serverWindowDisappear();
    else
        showLoginWindowAllowAutoLogin(true);
}
