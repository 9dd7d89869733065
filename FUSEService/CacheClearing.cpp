#include "CacheClearing.h"

#include "platform/Log.h"

#include <QDir>
#include <QDirIterator>

CacheClearing::CacheClearing(QBClearCacheInformation &flags, const QString &user, const QString &cacheFolder)
    : choices(flags), userID(user), folder(cacheFolder)
{
}

void CacheClearing::seed()
{
    if (!userID.isEmpty())
        choices.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(false, userID);
}

void CacheClearing::clearIfWanted()
{
    if (userID.isEmpty() || !choices.clearCacheSettingWindowFlag(userID))
        return;
    for (QDirIterator entry(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
         entry.hasNext();) {
        const QFileInfo item(entry.next());
        if (item.isDir() && !item.isSymLink())
            QDir(item.filePath()).removeRecursively();
        else
            QFile::remove(item.filePath());
    }
    platform::log(QStringLiteral("FUSEService: the cache is cleared"));
}
