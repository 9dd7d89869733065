#include "Arguments.h"

#include <algorithm>

std::optional<qint64> managerProcessId(const QStringList &arguments)
{
    constexpr qsizetype LongestNumber = 10;
    if (arguments.size() != 1 || arguments.first().isEmpty() || arguments.first().size() > LongestNumber)
        return std::nullopt;
    const QString text = arguments.first();
    const auto isDigit = [](QChar character) { return character >= u'0' && character <= u'9'; };
    if (!std::all_of(text.begin(), text.end(), isDigit) || text.startsWith(u'0'))
        return std::nullopt;
    const qint64 processId = text.toLongLong();
    return processId > 1 && processId <= INT32_MAX ? std::optional(processId) : std::nullopt;
}
