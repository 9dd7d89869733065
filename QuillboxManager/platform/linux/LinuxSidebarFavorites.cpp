#include "platform/linux/LinuxSidebarFavorites.h"

#include "platform/AtomicFile.h"
#include "platform/BoundedFile.h"
#include "platform/Log.h"
#include "platform/SidebarFavorites.h"
#include "platform/linux/LinuxFolders.h"
#include "platform/linux/PlacesFiles.h"

#include <QFileInfo>
#include <QUrl>

#include <functional>

namespace platform
{

namespace
{

QString bookmarks()
{
    return QStringLiteral("/gtk-3.0/bookmarks");
}

QString places()
{
    return QStringLiteral("/user-places.xbel");
}

using Change = std::function<std::optional<QByteArray>(const QByteArray &)>;

void edit(const QString &file, const Change &change)
{
    constexpr qsizetype largestList = 4 * 1024 * 1024;
    // The GTK list is there from the first bookmark on, its folder before.
    const bool empty =
        !QFileInfo::exists(file) && file.endsWith(bookmarks()) && QFileInfo::exists(QFileInfo(file).path());
    const auto content = empty ? std::optional(QByteArray()) : readBoundedFile(file, largestList);
    const auto changed = content ? change(*content) : std::nullopt;
    if (!changed)
        return;
    const bool shared = QFileInfo(file).permission(QFileDevice::ReadOther);
    if (!writeAtomically(file, *changed, shared ? FileAccess::Shared : FileAccess::OwnerOnly))
        log(QStringLiteral("The favourite places in %1 could not be changed").arg(file));
}

} // namespace

void LinuxSidebarFavorites::add(const QString &displayName, const QString &folder) const
{
    const QByteArray address = QUrl::fromLocalFile(folder).toEncoded();
    if (const QString base = folders.configurationBase(); !base.isNull())
        edit(base + bookmarks(), [&](const QByteArray &lines) { return withBookmark(lines, displayName, address); });
    if (const QString base = folders.dataBase(); !base.isNull())
        edit(base + places(), [&](const QByteArray &document) { return withPlace(document, displayName, address); });
}

void LinuxSidebarFavorites::removeFirstNamed(const QString &displayName)
{
    if (const QString base = folders.configurationBase(); !base.isNull())
        edit(base + bookmarks(), [&](const QByteArray &lines) { return withoutBookmark(lines, displayName); });
    if (const QString base = folders.dataBase(); !base.isNull())
        edit(base + places(), [&](const QByteArray &document) { return withoutPlace(document, displayName); });
}

void addToSidebarFavorites(const QString &folder)
{
    LinuxSidebarFavorites(LinuxFolders()).add(QFileInfo(folder).fileName(), folder);
}

} // namespace platform
