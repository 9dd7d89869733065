#pragma once

#include "files/QBClearCacheInformation.h"

/// Carries out the user's choice to have the cache cleared at the end of a session. What could not be saved on the
/// server is no cache and stays.
class CacheClearing
{
public:
    /// `folder`: what this service keeps on the disk besides.
    CacheClearing(QBClearCacheInformation &choices, const QString &userID, const QString &folder);

    /// Makes a place for the user's choice, which is "no" at first.
    void seed();
    /// Once nothing uses the folder any more.
    void clearIfWanted();

private:
    QBClearCacheInformation &choices;
    const QString userID;
    const QString folder;
};
