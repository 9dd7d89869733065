#include "update/UpdateAnswer.h"

namespace UpdateAnswer
{

namespace
{
QString text(const ServerReply &answer, const QString &key)
{
    const QJsonValue value = answer ? answer->value(key) : QJsonValue();
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', 15);
    return value.isString() ? value.toString() : QString();
}
} // namespace

bool isForced(const ServerReply &answer)
{
    return text(answer, QStringLiteral("result")) == QLatin1String("forced");
}

QString latest(const ServerReply &answer)
{
    return text(answer, QStringLiteral("latest"));
}

QString imageName(const ServerReply &answer)
{
    QString location = text(answer, QStringLiteral("downloadurl"));
    while (location.endsWith(u'/') && location.size() > 1)
        location.chop(1);
    return location == QLatin1String("/") ? location : location.mid(location.lastIndexOf(u'/') + 1);
}

} // namespace UpdateAnswer
