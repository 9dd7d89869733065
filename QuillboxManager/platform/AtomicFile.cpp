#include "platform/AtomicFile.h"

#include "platform/FileDescriptor.h"

#include <QFile>
#include <QRandomGenerator>

#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace platform
{

namespace
{

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

std::optional<QByteArray> linkTarget(const QByteArray &path)
{
    char buffer[4096];
    const ssize_t length = ::readlink(path.constData(), buffer, sizeof buffer);
    if (length <= 0 || length == sizeof buffer)
        return std::nullopt;
    const QByteArray target(buffer, length);
    return target.startsWith('/') ? target : folderOf(path) + '/' + target;
}

/// The path at the end of the chain of links; nothing for an endless chain or something other than a regular file,
/// which a rename would silently destroy.
std::optional<QByteArray> replaceablePath(QByteArray path)
{
    constexpr int longestChain = 40;
    for (int step = 0; step < longestChain; ++step) {
        struct stat information = {};
        if (::lstat(path.constData(), &information) != 0)
            return errno == ENOENT ? std::optional(path) : std::nullopt;
        if (S_ISREG(information.st_mode))
            return path;
        const auto target = S_ISLNK(information.st_mode) ? linkTarget(path) : std::nullopt;
        if (!target)
            return std::nullopt;
        path = *target;
    }
    return std::nullopt;
}

/// Opens a new file in the folder under a name that nobody else has and stores that name.
FileDescriptor openTemporary(const QByteArray &folder, FileAccess access, QByteArray &name)
{
    const mode_t mode = access == FileAccess::Shared ? 0644 : 0600;
    constexpr int attempts = 16;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        name = folder + "/.quillbox-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        FileDescriptor file(::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
        if (file.isOpen() || errno != EEXIST)
            return file;
    }
    return {};
}

bool writeAll(int file, const QByteArray &bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

void flushFolder(const QByteArray &folder)
{
    // The rename has happened by now; a file system that cannot flush folders is no reason to report a failure.
    const FileDescriptor opened(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen())
        ::fsync(opened.get());
}

} // namespace

bool writeAtomically(const QString &path, const QByteArray &bytes, FileAccess access)
{
    const auto target = path.isEmpty() ? std::nullopt : replaceablePath(QFile::encodeName(path));
    if (!target)
        return false;
    const QByteArray folder = folderOf(*target);
    QByteArray temporary;
    FileDescriptor file = openTemporary(folder, access, temporary);
    if (!file.isOpen())
        return false;
    const bool stored = writeAll(file.get(), bytes) && ::fsync(file.get()) == 0;
    if (!file.close() || !stored || ::rename(temporary.constData(), target->constData()) != 0) {
        ::unlink(temporary.constData());
        return false;
    }
    flushFolder(folder);
    return true;
}

} // namespace platform
