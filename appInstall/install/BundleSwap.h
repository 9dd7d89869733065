#pragma once

#include <QString>

#include <functional>

namespace install
{

/// The change of an installed bundle for a new one, in steps of which each may be the last: at every moment either the
/// old or the new bundle stands whole at its place, and what the folders look like tells the rest.
///
/// Beside "Name.app" stands the work folder ".Name.app.appInstall" with the new bundle, and after the exchange the old
/// one, under the bundle's own name. A new bundle carries the file "Contents/update-pending" until it has shown that it
/// works:
///
///     mark at its place   work folder   means
///     no                  no            nothing is going on
///     no                  yes           an update that did not come to its exchange, was taken back or is done
///     yes                 yes           the new bundle is on trial, the old one waits
///
/// Where the file system cannot exchange folders, the old bundle is "previous" in the work folder for a moment.
/// Not thread-safe; one process at a time, see InstallLock.
class BundleSwap
{
public:
    using Exchange = std::function<bool(const QString &one, const QString &other)>;

    explicit BundleSwap(const QString &bundle);
    /// `exchange` as exchangePaths; false makes the way of two renames be taken.
    BundleSwap(const QString &bundle, Exchange exchange);

    /// Where the new bundle is to be built up, and later the old one waits.
    QString staged() const { return work + u'/' + name; }
    QString workFolder() const { return work; }

    /// An empty work folder of this user. False when there is something else in its place.
    bool prepare() const;
    /// Marks the new bundle and puts it in the old one's place, everything flushed. False with the old one in place.
    bool exchange();
    /// The new bundle stands at its place and has not shown yet that it works.
    bool isPending() const;
    /// The new bundle works: takes the mark away. True when there is none any more.
    bool confirm() const;
    /// Puts the old bundle back. False when it cannot; the new one stays then.
    bool rollBack();
    /// Makes the state whole after an end at any step: a missing bundle comes back.
    void repair();
    /// Removes the work folder, whatever is in it.
    void clear() const;

private:
    bool change();
    bool changeByRenaming();

    const QString installed;
    const QString name;
    const QString parent;
    const QString work;
    const QString previous;
    const Exchange exchangeFolders;
};

} // namespace install
