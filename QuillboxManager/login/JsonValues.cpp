#include "login/JsonValues.h"

#include <QJsonValue>

#include <cmath>

namespace JsonValues
{

namespace
{
bool isTrueText(const QString &text)
{
    const QString trimmed = text.trimmed();
    return !trimmed.isEmpty() && QStringLiteral("yYtT123456789").contains(trimmed.front());
}

/// Beyond this a double no longer counts in ones.
constexpr double LargestWholeNumber = 9007199254740992.0;
} // namespace

bool boolean(const QJsonObject &from, const QString &key)
{
    const QJsonValue value = from.value(key);
    if (value.isDouble())
        return value.toDouble() != 0;
    if (value.isString())
        return isTrueText(value.toString());
    return value.toBool();
}

qint64 integer(const QJsonObject &from, const QString &key)
{
    const QJsonValue value = from.value(key);
    if (value.isBool())
        return value.toBool() ? 1 : 0;
    const double number = value.isString() ? value.toString().trimmed().toDouble() : value.toDouble();
    return std::isfinite(number) && std::abs(number) <= LargestWholeNumber ? static_cast<qint64>(number) : 0;
}

QString text(const QJsonObject &from, const QString &key)
{
    const QJsonValue value = from.value(key);
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', 15);
    return value.isString() ? value.toString() : QString();
}

QJsonObject object(const QJsonObject &from, const QString &key)
{
    return from.value(key).toObject();
}

bool hasObject(const QJsonObject &from, const QString &key)
{
    return from.value(key).isObject();
}

} // namespace JsonValues
