#include "files/PathBook.h"

#include "files/PathUtils.h"
#include "platform/Bundle.h"

using PathUtils::appending;

PathBook::PathBook(const platform::Folders &hostFolders, const QString &identifier)
    : folders(hostFolders), bundleIdentifier(identifier)
{
}

PathBook PathBook::forThisProcess()
{
    return PathBook(platform::host().folders, platform::Bundle::main().identifier());
}

QString PathBook::quillboxVolume() const
{
    return appending(folders.volumes(), QStringLiteral("Quillbox"));
}

QString PathBook::applicationSupportDirectoryFixed() const
{
    return appending(folders.library(),
                     QStringLiteral("Containers/com.velto.quillbox.FinderHelper1/Data/Library/Application Support"));
}

QString PathBook::applicationSupportDirectory() const
{
    // The identifier has no "1" at its end, the container's name has one: both processes meet in that container.
    if (bundleIdentifier == QLatin1String("com.velto.quillbox.FinderHelper"))
        return appending(folders.library(), QStringLiteral("Application Support"));
    return applicationSupportDirectoryFixed();
}

QString PathBook::applicationSupport() const
{
    return appending(applicationSupportDirectory(), QStringLiteral("com.velto.quillbox"));
}

QString PathBook::inApplicationSupport(const QString &name) const
{
    return appending(applicationSupport(), name);
}
