#pragma once

#include <QString>

/// Each user's choice whether the companion clears its cache at the end, and whether the reminder about it is still to
/// be shown. Kept in "clearCache.plist", which manager and companion share. Every call reads the file anew; nothing is
/// locked, so the latest writer wins. An unreadable file says no to everything. Touches the disk.
class QBClearCacheInformation
{
public:
    /// The shared file's, made on first use.
    static QBClearCacheInformation &defaultClearCacheInformation();

    /// Makes an empty file at `path` when none is there.
    explicit QBClearCacheInformation(const QString &path);

    QString path() const { return filePath; }

    /// Gives both flags this value for a user who has none yet; what is there stays. To be called before updating:
    /// an update finds no place otherwise and is lost.
    void initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(bool flag, const QString &userID);

    /// The user ticked "clear cache".
    bool clearCacheSettingWindowFlag(const QString &userID) const;
    /// The reminder is still to be shown.
    bool clearCacheAlertFlag(const QString &userID) const;
    /// False when the file could not be written; it is what it was then.
    bool updateClearCacheSettingWindowFlag(bool flag, const QString &userID);
    bool updateClearCacheShowFlag(bool flag, const QString &userID);

private:
    bool flag(const QString &key, const QString &userID) const;
    bool update(const QString &key, bool flag, const QString &userID);

    const QString filePath;
};
