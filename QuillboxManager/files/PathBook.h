#pragma once

#include "platform/Host.h"

#include <QString>

/// Where a process with a given bundle identifier, on a host with given folders, keeps its local files: the rules
/// behind QBPathIndicator, free of the running process. `folders` must outlive it. Any thread.
class PathBook
{
public:
    PathBook(const platform::Folders &folders, const QString &bundleIdentifier);
    /// The running process on its host.
    static PathBook forThisProcess();

    QString quillboxVolume() const;
    QString applicationSupportDirectoryFixed() const;
    QString applicationSupportDirectory() const;
    QString applicationSupport() const;
    /// A file or folder of the data folder; null when that folder cannot be told.
    QString inApplicationSupport(const QString &name) const;

private:
    const platform::Folders &folders;
    const QString bundleIdentifier;
};
