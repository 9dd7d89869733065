#include "install/ExchangePaths.h"

#include "platform/FileDescriptor.h"

#include <QFile>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace install
{

namespace
{
platform::FileDescriptor openFolder(const QString &folder)
{
    return platform::FileDescriptor(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}
} // namespace

bool exchangePaths(const QString &one, const QString &other)
{
    return ::renameat2(AT_FDCWD, QFile::encodeName(one).constData(), AT_FDCWD, QFile::encodeName(other).constData(),
                       RENAME_EXCHANGE) == 0;
}

bool flushFolder(const QString &folder)
{
    const platform::FileDescriptor descriptor = openFolder(folder);
    return descriptor.isOpen() && ::fsync(descriptor.get()) == 0;
}

bool flushFileSystem(const QString &folder)
{
    const platform::FileDescriptor descriptor = openFolder(folder);
    return descriptor.isOpen() && ::syncfs(descriptor.get()) == 0;
}

} // namespace install
