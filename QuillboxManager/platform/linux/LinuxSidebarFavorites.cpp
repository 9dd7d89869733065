#include "platform/linux/LinuxSidebarFavorites.h"

#include "platform/AtomicFile.h"
#include "platform/BoundedFile.h"
#include "platform/Log.h"
#include "platform/linux/LinuxFolders.h"
#include "platform/linux/PlacesFiles.h"

#include <QFileInfo>

namespace platform
{

namespace
{

using Edit = std::optional<QByteArray> (*)(const QByteArray &, const QString &);

void edit(const QString &file, Edit remove, const QString &name)
{
    constexpr qsizetype largestList = 4 * 1024 * 1024;
    const auto content = readBoundedFile(file, largestList);
    const auto changed = content ? remove(*content, name) : std::nullopt;
    if (!changed)
        return;
    const bool shared = QFileInfo(file).permission(QFileDevice::ReadOther);
    if (!writeAtomically(file, *changed, shared ? FileAccess::Shared : FileAccess::OwnerOnly))
        log(QStringLiteral("The favourite places in %1 could not be changed").arg(file));
}

} // namespace

void LinuxSidebarFavorites::removeFirstNamed(const QString &displayName)
{
    const QString configuration = folders.configurationBase();
    const QString data = folders.dataBase();
    if (!configuration.isNull())
        edit(configuration + QStringLiteral("/gtk-3.0/bookmarks"), withoutBookmark, displayName);
    if (!data.isNull())
        edit(data + QStringLiteral("/user-places.xbel"), withoutPlace, displayName);
}

} // namespace platform
