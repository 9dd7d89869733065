#include "files/QBClearCacheInformation.h"

#include "files/FileManagerCreate.h"
#include "files/PathUtils.h"
#include "files/QBPathIndicator.h"
#include "platform/PropertyList.h"

using namespace Qt::StringLiterals;
using platform::PropertyList::readDictionary;

namespace
{

QString settingKey()
{
    return u"ClearCacheSettingWindowFlag"_s;
}

QString alertKey()
{
    return u"ClearCacheShowAlertFlag"_s;
}

bool isDictionary(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantMap;
}

void seed(QVariantMap &root, const QString &key, bool flag, const QString &userID)
{
    QVariantMap users = root.value(key).toMap();
    if (users.contains(userID))
        return;
    users.insert(userID, flag);
    root.insert(key, users);
}

} // namespace

QBClearCacheInformation &QBClearCacheInformation::defaultClearCacheInformation()
{
    static QBClearCacheInformation information(QBPathIndicator::pathForclearCachePlist());
    return information;
}

QBClearCacheInformation::QBClearCacheInformation(const QString &path) : filePath(path)
{
    if (!PathUtils::existFile(path))
        FileManagerCreate::createFileIfNotExist(path);
}

void QBClearCacheInformation::initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(bool flag,
                                                                                           const QString &userID)
{
    QVariantMap root = readDictionary(filePath).value_or(QVariantMap());
    seed(root, settingKey(), flag, userID);
    seed(root, alertKey(), flag, userID);
    platform::PropertyList::write(filePath, root);
}

bool QBClearCacheInformation::clearCacheSettingWindowFlag(const QString &userID) const
{
    return flag(settingKey(), userID);
}

bool QBClearCacheInformation::clearCacheAlertFlag(const QString &userID) const
{
    return flag(alertKey(), userID);
}

bool QBClearCacheInformation::updateClearCacheSettingWindowFlag(bool flag, const QString &userID)
{
    return update(settingKey(), flag, userID);
}

bool QBClearCacheInformation::updateClearCacheShowFlag(bool flag, const QString &userID)
{
    return update(alertKey(), flag, userID);
}

bool QBClearCacheInformation::flag(const QString &key, const QString &userID) const
{
    const QVariant value = readDictionary(filePath).value_or(QVariantMap()).value(key).toMap().value(userID);
    // Anything but a truth value or a number is damage, and damage must not clear anything.
    const bool counts = value.typeId() == QMetaType::Bool || value.typeId() == QMetaType::LongLong;
    return counts && value.toBool();
}

bool QBClearCacheInformation::update(const QString &key, bool flag, const QString &userID)
{
    QVariantMap root = readDictionary(filePath).value_or(QVariantMap());
    if (!isDictionary(root.value(key)))
        return false;
    QVariantMap users = root.value(key).toMap();
    users.insert(userID, flag);
    root.insert(key, users);
    return platform::PropertyList::write(filePath, root);
}
