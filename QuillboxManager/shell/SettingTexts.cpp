#include "shell/SettingTexts.h"

#include "login/JsonValues.h"
#include "platform/Localization.h"

#include <QHash>
#include <QJsonArray>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;
using platform::localizedString;

namespace SettingTexts
{

namespace
{
QString roleName(const QJsonObject &role)
{
    static const QHash<QString, QString> keys{
        {u"7dcfcc9c-ad02-11e8-aa06-000c29358ad6"_s, u"超级管理员"_s},
        {u"d2bd2082-ad03-11e8-aa06-000c29358ad6"_s, u"系统管理员"_s},
        {u"d8998f72-ad03-11e8-aa06-000c29358ad6"_s, u"安全管理员"_s},
        {u"def246f2-ad03-11e8-aa06-000c29358ad6"_s, u"审计管理员"_s},
        {u"e63e1c88-ad03-11e8-aa06-000c29358ad6"_s, u"组织管理员"_s},
        {u"f06ac18e-ad03-11e8-aa06-000c29358ad6"_s, u"组织审计员"_s},
        {u"f58622b2-ad03-11e8-aa06-000c29358ad6"_s, u"共享审核员"_s},
        {u"fb648fac-ad03-11e8-aa06-000c29358ad6"_s, u"文档审核员"_s},
        {u"01a78ac2-ad04-11e8-aa06-000c29358ad6"_s, u"定密审核员"_s},
    };
    const QString key = keys.value(JsonValues::text(role, u"id"_s));
    return key.isNull() ? JsonValues::text(role, u"name"_s) : localizedString(key);
}

double sum(const QJsonArray &entries, const QString &key)
{
    double bytes = 0;
    for (const QJsonValue entry : entries)
        bytes += entry.toObject().value(key).toDouble();
    return bytes;
}
} // namespace

QString roles(const QJsonObject &user)
{
    QStringList names;
    const QJsonArray infos = user.value(u"roleinfos").toArray();
    for (const QJsonValue info : infos)
        names.append(roleName(info.toObject()));
    names.append(localizedString(u"普通用户"_s));
    return names.join(u',');
}

QString departments(const QJsonObject &user)
{
    QStringList names;
    const QJsonArray infos = user.value(u"directdepinfos").toArray();
    for (const QJsonValue info : infos)
        names.append(JsonValues::text(info.toObject(), u"name"_s));
    return names.join(u',');
}

QString mail(const QJsonObject &user)
{
    const QString address = JsonValues::text(user, u"mail"_s);
    return address.isEmpty() ? u"--"_s : address;
}

Quota quota(const std::optional<QJsonObject> &reply)
{
    const double toGibibytes = std::ldexp(1.0, -30);
    const QJsonArray entries = reply ? reply->value(u"quotainfos").toArray() : QJsonArray();
    const double total = sum(entries, u"quota"_s) * toGibibytes;
    const double used = sum(entries, u"used"_s) * toGibibytes;
    if (std::fpclassify(total) == FP_ZERO)
        return {localizedString(u"已使用0.00G/共0.00G"_s), 0};
    const QByteArray format = localizedString(u"已使用%.2fG/共%.2fG"_s).toUtf8();
    return {QString::asprintf(format.constData(), used, total), qBound(0.0, used / total * 100, 100.0)};
}

bool showsRegistration(const QStringList &preferredLanguages)
{
    const QString first = preferredLanguages.value(0);
    return first.contains(u"zh-Hans") || first.contains(u"zh-Hant");
}

} // namespace SettingTexts
