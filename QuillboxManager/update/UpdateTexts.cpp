#include "update/UpdateTexts.h"

#include "platform/Localization.h"

namespace UpdateTexts
{

namespace
{
constexpr qsizetype LongestVersion = 32;

QString text(const QString &key)
{
    return platform::localizedString(key, QStringLiteral("UpdateWindow"));
}
} // namespace

QString newVersion(const QString &version)
{
    return platform::fillPlaceholders(text(QStringLiteral("发现新版本%@，是否需要更新？")),
                                      {line(version, LongestVersion)});
}

QString currentVersion(const QString &version)
{
    return platform::fillPlaceholders(text(QStringLiteral("当前版本%@")), {line(version, LongestVersion)});
}

QString later()
{
    return text(QStringLiteral("以后再说"));
}

QString updateNow()
{
    return text(QStringLiteral("立即更新"));
}

QString updating()
{
    return text(QStringLiteral("正在更新，请稍候......"));
}

QString line(const QString &text, qsizetype longest)
{
    const QString simple = text.simplified();
    return simple.size() <= longest ? simple : simple.left(longest - 1) + QChar(0x2026);
}

} // namespace UpdateTexts
