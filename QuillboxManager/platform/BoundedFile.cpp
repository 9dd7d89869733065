#include "platform/BoundedFile.h"

#include "platform/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform
{

std::optional<QByteArray> readBoundedFile(const QString &path, qsizetype maximumBytes)
{
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat information = {};
    if (!file.isOpen() || ::fstat(file.get(), &information) != 0 || !S_ISREG(information.st_mode))
        return std::nullopt;
    // The size is not trusted: files of the kernel report none, others may grow while they are read.
    QByteArray bytes;
    char buffer[16384];
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer, sizeof buffer);
        if (count == 0)
            return bytes;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 || bytes.size() + count > maximumBytes)
            return std::nullopt;
        bytes.append(buffer, count);
    }
}

} // namespace platform
