#include "Call.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
[[noreturn]] void refuse(const char *member)
{
    throw ApiError{IllegalParameter, {}, u"parameter: %1"_s.arg(QLatin1String(member)), {}};
}
} // namespace

QString optionalText(const QJsonObject &body, const char *member, qsizetype longest)
{
    const QJsonValue value = body.value(QLatin1String(member));
    if (!value.isUndefined() && (!value.isString() || value.toString().size() > longest))
        refuse(member);
    return value.toString();
}

QString requiredText(const QJsonObject &body, const char *member, qsizetype longest)
{
    const QString text = optionalText(body, member, longest);
    if (text.isEmpty())
        refuse(member);
    return text;
}

QJsonObject optionalObject(const QJsonObject &body, const char *member)
{
    const QJsonValue value = body.value(QLatin1String(member));
    if (!value.isUndefined() && !value.isObject())
        refuse(member);
    return value.toObject();
}

QJsonObject requiredObject(const QJsonObject &body, const char *member)
{
    if (!body.contains(QLatin1String(member)))
        refuse(member);
    return optionalObject(body, member);
}

qint64 requiredNumber(const QJsonObject &body, const char *member, qint64 low, qint64 high)
{
    const QJsonValue value = body.value(QLatin1String(member));
    bool isNumber = value.isDouble();
    const double number = value.isString() ? value.toString().toDouble(&isNumber) : value.toDouble();
    if (!isNumber || number != std::floor(number) || number < double(low) || number > double(high))
        refuse(member);
    return static_cast<qint64>(number);
}

bool requiredFlag(const QJsonObject &body, const char *member)
{
    const QJsonValue value = body.value(QLatin1String(member));
    return value.isBool() ? value.toBool() : requiredNumber(body, member, 0, 1) == 1;
}

} // namespace documentserver
