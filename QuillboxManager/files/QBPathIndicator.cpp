#include "files/QBPathIndicator.h"

#include "files/PathBook.h"
#include "platform/Bundle.h"

namespace
{
QString inApplicationSupport(const QString &name)
{
    return PathBook::forThisProcess().inApplicationSupport(name);
}
} // namespace

QString QBPathIndicator::pathForQuillboxVolume()
{
    return PathBook::forThisProcess().quillboxVolume();
}

QString QBPathIndicator::applicationSupportDirectoryFixed()
{
    return PathBook::forThisProcess().applicationSupportDirectoryFixed();
}

QString QBPathIndicator::applicationSupportDirectory()
{
    return PathBook::forThisProcess().applicationSupportDirectory();
}

QString QBPathIndicator::applicationSupportDirectoryFor(const QString &bundleIdentifier)
{
    return PathBook(platform::host().folders, bundleIdentifier).applicationSupportDirectory();
}

QString QBPathIndicator::pathForApplicationSupport()
{
    return PathBook::forThisProcess().applicationSupport();
}

QString QBPathIndicator::pathForCoreDataStorage()
{
    return inApplicationSupport(QStringLiteral("COREDATA"));
}

QString QBPathIndicator::pathForCoreDataModel(const QString &name)
{
    return platform::Bundle::main().pathForResource(name, QStringLiteral("momd"));
}

QString QBPathIndicator::pathForBackup()
{
    return inApplicationSupport(QStringLiteral("BACKUP"));
}

QString QBPathIndicator::pathForGlobeInformation()
{
    return inApplicationSupport(QStringLiteral("quillbox.globe"));
}

QString QBPathIndicator::pathForDownloadFileInformation()
{
    return inApplicationSupport(QStringLiteral("download.info"));
}

QString QBPathIndicator::pathForclearCachePlist()
{
    return inApplicationSupport(QStringLiteral("clearCache.plist"));
}

QString QBPathIndicator::categoryNameWithType(int type)
{
    switch (type) {
    case 1:
        return QStringLiteral("MyDocuments.localized");
    case 2:
        return QStringLiteral("GroupDocuments.localized");
    case 3:
        return QStringLiteral("Libraries.localized");
    case 4:
        return QStringLiteral("SharedDocuments.localized");
    case 5:
        return QStringLiteral("ArchiveLibraries.localized");
    case 6:
        return QStringLiteral("ShareGroupDocuments.localized");
    case 7:
        return QStringLiteral("UnSyncCatalogs.localized");
    default:
        return {};
    }
}
