#pragma once

#include <QString>

/// The one place that knows where the client keeps its local files. Any thread. Every path is null when the folder it
/// rests on cannot be told.
class QBPathIndicator
{
public:
    /// Mount point of the cloud volume.
    static QString pathForQuillboxVolume();
    /// The Finder helper's container, which the manager shares with it.
    static QString applicationSupportDirectoryFixed();
    /// The user's own folder for the Finder helper itself, the shared container for every other process.
    static QString applicationSupportDirectory();
    static QString pathForApplicationSupport();
    static QString pathForCoreDataStorage();
    static QString pathForCoreDataModel(const QString &name);
    static QString pathForBackup();
    static QString pathForGlobeInformation();
    static QString pathForDownloadFileInformation();
    static QString pathForclearCachePlist();

    /// Folder name of a top-level category (1 to 7), null for any other number.
    static QString categoryNameWithType(int type);

    /// As `applicationSupportDirectory`, for a process with the given bundle identifier.
    static QString applicationSupportDirectoryFor(const QString &bundleIdentifier);
};
