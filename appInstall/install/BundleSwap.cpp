#include "install/BundleSwap.h"

#include "install/ExchangePaths.h"
#include "platform/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace install
{

namespace
{

QString markIn(const QString &bundle)
{
    return bundle + "/Contents/update-pending"_L1;
}

bool isThere(const QString &path)
{
    struct stat information = {};
    return ::lstat(QFile::encodeName(path).constData(), &information) == 0;
}

bool isMarked(const QString &bundle)
{
    return isThere(markIn(bundle));
}

bool isOwnFolder(const QString &path)
{
    struct stat information = {};
    return ::lstat(QFile::encodeName(path).constData(), &information) == 0 && S_ISDIR(information.st_mode) &&
           information.st_uid == ::geteuid();
}

bool move(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

} // namespace

BundleSwap::BundleSwap(const QString &bundle) : BundleSwap(bundle, exchangePaths) {}

BundleSwap::BundleSwap(const QString &bundle, Exchange exchange)
    : installed(bundle), name(QFileInfo(bundle).fileName()), parent(QFileInfo(bundle).path()),
      work(parent + "/."_L1 + name + ".appInstall"_L1), previous(work + "/previous"_L1),
      exchangeFolders(std::move(exchange))
{
}

bool BundleSwap::prepare() const
{
    clear();
    return ::mkdir(QFile::encodeName(work).constData(), 0700) == 0;
}

bool BundleSwap::exchange()
{
    return platform::writeAtomically(markIn(staged()), {}) && flushFileSystem(work) && flushFolder(parent) && change();
}

bool BundleSwap::isPending() const
{
    return isMarked(installed);
}

bool BundleSwap::confirm() const
{
    QFile::remove(markIn(installed));
    return !isPending();
}

bool BundleSwap::rollBack()
{
    return isThere(staged()) && change();
}

void BundleSwap::repair()
{
    if (!isThere(installed)) {
        // Killed between two renames: the bundle without the mark is the one that is known to work.
        const bool previousWorks = isThere(previous) && !isMarked(previous);
        move(previousWorks || !isThere(staged()) ? previous : staged(), installed);
    }
    if (isThere(previous) && !isThere(staged()))
        move(previous, staged());
    flushFolder(parent);
}

void BundleSwap::clear() const
{
    if (isOwnFolder(work))
        QDir(work).removeRecursively();
    else
        QFile::remove(work); // a file or a link
}

bool BundleSwap::change()
{
    const bool changed = exchangeFolders(staged(), installed) || changeByRenaming();
    flushFolder(work);
    flushFolder(parent);
    return changed;
}

bool BundleSwap::changeByRenaming()
{
    if (!move(installed, previous))
        return false;
    if (!move(staged(), installed)) {
        move(previous, installed);
        return false;
    }
    return move(previous, staged());
}

} // namespace install
