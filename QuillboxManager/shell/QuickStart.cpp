#include "shell/QuickStart.h"

#include "login/JsonValues.h"
#include "login/QuickStartWindowController.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"
#include "shell/VisibleWindow.h"
#include "shell/WebClientAddress.h"

#include <optional>
#include <utility>

namespace shell
{

namespace
{
bool isWebAddress(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

/// Blocks. Nothing when there is no need.
std::optional<Introduction> askForIntroduction(QBNetworking &networking, const QString &version)
{
    QBError error;
    const ServerReply config = networking.getConfig(&error);
    if (!config || !JsonValues::boolean(*config, ShellStrings::needQuickStartKey()))
        return std::nullopt;
    const ServerReply oemConfig = networking.getOEMConfigBySection(&error);
    return introductionFor(oemConfig, platform::localizedString(ShellStrings::quickStartURL()), version);
}
} // namespace

Introduction introductionFor(const ServerReply &oemConfig, const QString &page, const QString &version)
{
    QString own = JsonValues::text(oemConfig.value_or(QJsonObject()), ShellStrings::quickStartURL());
    if (!isWebAddress(QUrl(own, QUrl::StrictMode)))
        return {QUrl(helpAddress(page, version)), false};
    if (!own.contains(u'?'))
        own += u'?';
    return {QUrl(helpAddress(own, version)), true};
}

QuickStart::QuickStart(QBNetworking &client, const QString &version, Opener opener, WindowMaker maker, QObject *parent)
    : QObject(parent), networking(client), clientVersion(version), openExternally(std::move(opener)),
      makeWindow(maker ? std::move(maker) : [] { return std::make_unique<QuickStartWindowController>(); })
{
}

QuickStart::~QuickStart() = default;

void QuickStart::openIfNeeded()
{
    platform::inBackground(
        this, [&client = networking, version = clientVersion] { return askForIntroduction(client, version); },
        [this, asked = session](const std::optional<Introduction> &introduction) {
            if (introduction && asked == session)
                open(*introduction);
        });
}

void QuickStart::open(const Introduction &introduction)
{
    if (introduction.isOwn)
        openWindow(introduction.address);
    else
        openExternally(introduction.address);
    platform::dispatchGlobal([&client = networking] { client.setquickstartstatus(nullptr); });
}

void QuickStart::openWindow(const QUrl &address)
{
    window = makeWindow();
    window->initWithWindowNibName(QStringLiteral("QuickStartWindowController"), address);
    window->showWindow();
    window->loadQuickStartWebView();
}

void QuickStart::close()
{
    ++session;
    window.reset();
}

QBWindowController *QuickStart::visibleWindow() const
{
    return firstVisible({window.get()});
}

} // namespace shell
