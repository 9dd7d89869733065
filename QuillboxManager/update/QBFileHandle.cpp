#include "update/QBFileHandle.h"

#include "files/PathUtils.h"
#include "platform/Log.h"

#include <QFile>

#include <fcntl.h>

namespace
{

int flagsFor(qint64 behavior)
{
    switch (behavior) {
    case QBFileHandle::WriteOnly:
        return O_WRONLY;
    case QBFileHandle::Update:
    case QBFileHandle::UpdateAgain:
        return O_RDWR;
    default:
        return O_RDONLY;
    }
}

} // namespace

QBFileHandle::QBFileHandle(const QString &dstPath, qint64 behavior)
    : path(dstPath), access(behavior),
      handle(::open(QFile::encodeName(path).constData(), flagsFor(behavior) | O_CLOEXEC | O_NONBLOCK))
{
}

std::unique_ptr<QBFileHandle> QBFileHandle::initWithPath(const QString &path, qint64 behavior)
{
    if (!PathUtils::existFile(path))
        return nullptr;
    std::unique_ptr<QBFileHandle> made(new QBFileHandle(path, behavior));
    if (!made->handle.isOpen())
        platform::log(QStringLiteral("ERROR: Can't init fileHandle"));
    return made;
}
