#include "shell/WebClientAddress.h"

#include "platform/Localization.h"
#include "shell/VersionComparison.h"

namespace shell
{

namespace
{
constexpr qint64 FirstVersionWithLoginPage = 6;
}

QString webClientAddress(const WebClientPage &page)
{
    const QString scheme = page.https ? QStringLiteral("s") : QString();
    const QString base = platform::fillPlaceholders(QStringLiteral("http%@://%@"), {scheme, page.server});
    if (page.tokenID.isNull())
        return base;
    const QString format =
        page.serverVersion < FirstVersionWithLoginPage
            ? QStringLiteral("%@:%@/#/jumping?action=redirect&target=userdoc&userid=%@&tokenid=%@&platform=mac")
            : QStringLiteral("%@:%@/login?redirect=/home/documents/all&userid=%@&tokenid=%@&platform=mac");
    return platform::fillPlaceholders(format, {base, page.port, page.userID, page.tokenID});
}

QString helpAddress(const QString &page, const QString &version)
{
    return platform::fillPlaceholders(QStringLiteral("%@&version=%@"), {page, threeComponentVersion(version)});
}

} // namespace shell
