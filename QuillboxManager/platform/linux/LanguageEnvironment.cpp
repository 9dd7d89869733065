#include "platform/linux/LanguageEnvironment.h"

namespace platform
{

namespace
{

QString scriptOfChinese(const QString &region)
{
    const bool traditional = region == QLatin1String("TW") || region == QLatin1String("HK") ||
                             region == QLatin1String("MO") || region == QLatin1String("Hant");
    return traditional ? QStringLiteral("Hant") : QStringLiteral("Hans");
}

/// "zh_CN.UTF-8@modifier" → "zh-Hans-CN"; empty for "C" and "POSIX".
QString tagOf(const QString &locale)
{
    const QString plain = locale.section(u'@', 0, 0).section(u'.', 0, 0).replace(u'-', u'_');
    if (plain.isEmpty() || plain == QLatin1String("C") || plain == QLatin1String("POSIX"))
        return {};
    QStringList parts = plain.split(u'_', Qt::SkipEmptyParts);
    const bool hasScript = parts.size() > 1 && parts[1].size() == 4;
    if (!parts.isEmpty() && parts.first() == QLatin1String("zh") && !hasScript)
        parts.insert(1, scriptOfChinese(parts.value(1)));
    return parts.join(u'-');
}

} // namespace

QStringList languagesFrom(const LanguageEnvironment &environment)
{
    const QString locale = !environment.all.isEmpty()        ? environment.all
                           : !environment.messages.isEmpty() ? environment.messages
                                                             : environment.lang;
    QStringList tags;
    QStringList locales{locale};
    if (!tagOf(locale).isEmpty())
        locales = environment.language.split(u':', Qt::SkipEmptyParts) + locales;
    for (const QString &candidate : locales) {
        const QString tag = tagOf(candidate);
        if (!tag.isEmpty() && !tags.contains(tag))
            tags.append(tag);
    }
    return tags;
}

} // namespace platform
