#include "ContentFolder.h"

#include "DocumentServer/ApiError.h"
#include "DocumentServer/PasswordHash.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr size_t bufferSize = 256 * 1024;
constexpr size_t blockSize = 4096;

[[noreturn]] void fail(const char *what)
{
    throw ApiError{InternalError, {}, u"content: %1: %2"_s.arg(QLatin1String(what), qt_error_string(errno)), {}};
}

bool isZero(const char *data, size_t length)
{
    return data[0] == 0 && std::memcmp(data, data + 1, length - 1) == 0;
}
} // namespace

ContentWriter::ContentWriter(const QString &folder, QString name)
    : id(std::move(name)), path(QFile::encodeName(folder + u'/' + id))
{
    file = ::open(path.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        fail("open");
}

ContentWriter::~ContentWriter()
{
    if (file >= 0)
        ::close(file);
    if (!kept)
        ::unlink(path.constData());
}

void ContentWriter::write(const char *data, qint64 length)
{
    if (buffer.empty())
        buffer.resize(bufferSize);
    while (length > 0) {
        const size_t count = std::min(static_cast<size_t>(length), bufferSize - used);
        std::memcpy(buffer.data() + used, data, count);
        used += count;
        data += count;
        length -= static_cast<qint64>(count);
        if (used == bufferSize)
            flush();
    }
}

/// Neighbouring blocks that hold anything are written together, blocks of zeros not at all.
void ContentWriter::flush()
{
    size_t start = 0;
    for (size_t block = 0; block < used; block += blockSize) {
        const size_t length = std::min(blockSize, used - block);
        if (!isZero(buffer.data() + block, length))
            continue;
        writeAt(buffer.data() + start, block - start, flushed + static_cast<qint64>(start));
        start = block + length;
    }
    writeAt(buffer.data() + start, used - start, flushed + static_cast<qint64>(start));
    flushed += static_cast<qint64>(used);
    used = 0;
}

void ContentWriter::writeAt(const char *data, size_t length, qint64 position)
{
    while (length > 0) {
        const ssize_t count = ::pwrite(file, data, length, position);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            fail("write");
        data += count;
        length -= static_cast<size_t>(count);
        position += count;
    }
}

void ContentWriter::finish(Flush when)
{
    flush();
    if (::ftruncate(file, flushed) != 0)
        fail("truncate");
    if (when == Flush::Now && ::fsync(file) != 0)
        fail("sync");
    ::close(file);
    file = -1;
    buffer = {};
}

QString ContentFolder::pathOf(const QString &content) const
{
    return root + u'/' + content.left(2) + u'/' + content;
}

bool ContentFolder::open(const QString &folder, const std::function<bool(const QString &)> &isInUse, QString *error)
{
    root = folder;
    if (!QDir().mkpath(incoming())) {
        *error = u"cannot make the folder %1"_s.arg(folder);
        return false;
    }
    const QStringList left = QDir(incoming()).entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &content : left) {
        if (isInUse(content))
            settle(content);
        else
            QFile::remove(incoming() + u'/' + content);
    }
    return true;
}

std::unique_ptr<ContentWriter> ContentFolder::write() const
{
    return std::make_unique<ContentWriter>(incoming(), QString::fromLatin1(randomBytes(16).toHex()));
}

void ContentFolder::flush() const
{
    const int folder = ::open(QFile::encodeName(root).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool flushed = folder >= 0 && ::syncfs(folder) == 0;
    const int problem = errno;
    if (folder >= 0)
        ::close(folder);
    errno = problem;
    if (!flushed)
        fail("sync");
}

void ContentFolder::settle(const QString &content) const
{
    const QByteArray from = QFile::encodeName(incoming() + u'/' + content);
    const QByteArray to = QFile::encodeName(pathOf(content));
    if (::rename(from.constData(), to.constData()) == 0 || errno != ENOENT)
        return;
    ::mkdir(to.left(to.lastIndexOf('/')).constData(), S_IRWXU);
    // Should it fail, the content is found where it is, and moved at the next start.
    static_cast<void>(::rename(from.constData(), to.constData()));
}

int ContentFolder::descriptor(const QString &content) const
{
    const QString settled = pathOf(content);
    for (const QString &path : {settled, incoming() + u'/' + content, settled}) {
        const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
        if (file >= 0)
            return file;
    }
    return -1;
}

void ContentFolder::remove(const QString &content) const
{
    QFile::remove(pathOf(content));
    QFile::remove(incoming() + u'/' + content);
}

} // namespace documentserver
