#include "update/DownloadFault.h"

#include "platform/Localization.h"
#include "update/UpdateTexts.h"

namespace
{
/// Texts of servers are shown in one line of a small window.
constexpr qsizetype LongestDetail = 60;

QString keyOf(DownloadFault fault)
{
    switch (fault) {
    case DownloadFault::HttpStatus:
        return QStringLiteral("UpdateHttpStatus");
    case DownloadFault::NotAnImage:
        return QStringLiteral("UpdateNotAnImage");
    case DownloadFault::NameRefused:
        return QStringLiteral("UpdateNameRefused");
    case DownloadFault::TargetTaken:
        return QStringLiteral("UpdateTargetTaken");
    case DownloadFault::NotYours:
        return QStringLiteral("UpdateNotYours");
    case DownloadFault::NoSpace:
        return QStringLiteral("UpdateNoSpace");
    case DownloadFault::CannotStore:
        return QStringLiteral("UpdateCannotStore");
    case DownloadFault::NoInstaller:
        return QStringLiteral("UpdateNoInstaller");
    case DownloadFault::Incomplete:
    case DownloadFault::None:
        break;
    }
    return QStringLiteral("UpdateIncomplete");
}
} // namespace

QString downloadFaultText(DownloadFault fault, const QString &detail)
{
    return platform::fillPlaceholders(platform::localizedString(keyOf(fault), QStringLiteral("Messages")),
                                      {UpdateTexts::line(detail, LongestDetail)});
}
