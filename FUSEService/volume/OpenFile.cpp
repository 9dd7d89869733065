#include "volume/OpenFile.h"

#include "volume/Errno.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace volume
{
namespace
{
constexpr qint64 everything = std::numeric_limits<qint64>::max();
}

OpenFile::OpenFile(const FileServices &fileServices, const DocumentPointer &document)
    : services(fileServices), base(document), shown{document->size, document->modified}
{
}

OpenFile::OpenFile(const FileServices &fileServices, Life newLife)
    : services(fileServices), unsaved(true), life(newLife), shown{0, fileServices.now()},
      shownUnsaved(newLife == Life::Shared), shownLocalOnly(newLife == Life::LocalOnly)
{
    makeStage(0);
}

OpenFile::~OpenFile()
{
    releaseLock();
}

OpenFile::Look OpenFile::look() const
{
    const std::lock_guard lock(shownMutex);
    return shown;
}

bool OpenFile::isUnsaved() const
{
    const std::lock_guard lock(shownMutex);
    return shownUnsaved;
}

bool OpenFile::isLocalOnly() const
{
    const std::lock_guard lock(shownMutex);
    return shownLocalOnly;
}

void OpenFile::show(qint64 size, qint64 modified)
{
    const std::lock_guard lock(shownMutex);
    shown = {size, modified};
    shownUnsaved = unsaved && life == Life::Shared;
}

void OpenFile::opened(const DocumentPointer &document)
{
    const std::lock_guard lock(content);
    if (!document || unsaved || life != Life::Shared || (base && base->rev == document->rev))
        return;
    base = document;
    stage.reset();
    show(base->size, base->modified);
}

Slices OpenFile::read(qint64 offset, qint64 length, ReadAhead &readAhead)
{
    DocumentPointer document;
    {
        const std::lock_guard lock(content);
        if (stage)
            return readStage(offset, length);
        document = base;
    }
    length = std::clamp<qint64>(document->size - offset, 0, length);
    if (length == 0)
        return {};
    const ReadAhead::Blocks soon = readAhead.advance(offset, length, document->size);
    if (soon.count > 0)
        services.cache.prefetch(*document, soon.first, soon.count);
    return services.cache.slices(*document, offset, length);
}

Slices OpenFile::readStage(qint64 offset, qint64 length)
{
    length = std::clamp<qint64>(stage->size() - offset, 0, length);
    const auto copied = std::make_shared<Block>(length);
    const qint64 got = stage->read(offset, length, copied->data());
    return {{copied, copied->data(), got}};
}

void OpenFile::makeStage(qint64 keptLength)
{
    const DocumentPointer from = base;
    BlockCache &cache = services.cache;
    const auto fetch = [from, &cache](qint64 offset, qint64 length, char *into) {
        if (cache.read(*from, offset, length, into) != length)
            throw Errno{EIO};
    };
    stage = std::make_unique<WriteStage>(services.stagingFolder, from ? std::min(keptLength, from->size) : 0, fetch);
}

void OpenFile::beginWriting(qint64 keptLength)
{
    if (life == Life::Shared && base && !locked) {
        services.store.lock(base->id);
        locked = true;
    }
    if (!stage)
        makeStage(keptLength);
}

void OpenFile::noteWritten()
{
    unsaved = true;
    saveFailed = false;
    show(stage->size(), services.now());
}

void OpenFile::write(qint64 offset, const char *bytes, qint64 length)
{
    const std::lock_guard lock(content);
    beginWriting(everything);
    stage->write(offset, bytes, length);
    noteWritten();
}

void OpenFile::truncate(qint64 size)
{
    const std::lock_guard lock(content);
    beginWriting(size);
    stage->truncate(size);
    noteWritten();
}

bool OpenFile::setModified(qint64 modified)
{
    const std::lock_guard lock(content);
    if (!unsaved)
        return false;
    show(stage->size(), modified);
    return true;
}

WriteStage &OpenFile::wholeStage()
{
    if (!stage)
        makeStage(everything);
    stage->complete();
    return *stage;
}

void OpenFile::saved(const DocumentPointer &document)
{
    base = document;
    unsaved = saveFailed = false;
    show(stage ? stage->size() : document->size, document->modified);
}

void OpenFile::becomeShared()
{
    life = Life::Shared;
    unsaved = true;
    const std::lock_guard lock(shownMutex);
    shownUnsaved = true;
    shownLocalOnly = false;
}

void OpenFile::releaseLock()
{
    if (!locked)
        return;
    locked = false;
    try {
        services.store.unlock(base->id);
    } catch (const Errno &) {
        // Logged where it failed; the contents are safe, and the lock can be broken on the server.
    }
}

bool OpenFile::copyStage(const QString &path)
{
    return stage && QFile::copy(QStringLiteral("/proc/self/fd/%1").arg(stage->descriptor()), path);
}

void OpenFile::becomeRemoved()
{
    releaseLock();
    life = Life::Removed;
    const Look last = look();
    show(last.size, last.modified);
}

} // namespace volume
