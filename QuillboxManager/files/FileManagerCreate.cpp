#include "files/FileManagerCreate.h"

#include "platform/Localization.h"
#include "platform/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace FileManagerCreate
{

namespace
{

/// The texts and line numbers stand as readers of the log know them, although three of the four name one operation.
const QString createFileMessage = QStringLiteral("ERROR: createFileAlwaysReplace - %@ at line : %d");
const QString createDirectoryMessage = QStringLiteral("ERROR: createDirectoryIfNotExist - %@ at line : %d");

bool fail(QString message, const QString &path, int error, int line)
{
    const QString reason = QString::fromStdString(std::generic_category().message(error));
    message.replace(QLatin1String("%d"), QString::number(line));
    platform::log(platform::fillPlaceholders(message, {QStringLiteral("%1: %2").arg(path, reason)}));
    return false;
}

/// Replacing one of these would empty a folder that the caller did not name.
bool isUsable(const QString &path)
{
    const QString name = path.section(u'/', -1, -1, QString::SectionSkipEmpty);
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !path.contains(QChar(u'\0'));
}

bool isRegularFile(const QString &path)
{
    return QFileInfo(path).isFile();
}

bool isFolder(const QString &path)
{
    return QFileInfo(path).isDir();
}

/// Zero or the system's error number.
int makeFolders(const QString &path)
{
    if (isFolder(path))
        return 0;
    const QString parent = QFileInfo(path).path();
    if (parent != path) {
        if (const int error = makeFolders(parent))
            return error;
    }
    if (::mkdir(QFile::encodeName(path).constData(), 0700) == 0)
        return 0;
    const int error = errno;
    return error == EEXIST && isFolder(path) ? 0 : error; // another process was faster
}

/// Zero or the system's error number. A file that another process made meanwhile keeps its content.
int makeFile(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
    if (descriptor < 0)
        return errno;
    ::close(descriptor);
    return 0;
}

int makeFileAndParents(const QString &path)
{
    const int error = makeFolders(QFileInfo(path).path());
    return error ? error : makeFile(path);
}

/// A link is removed, never what it points to.
bool removeFolder(const QString &path)
{
    return QFileInfo(path).isSymLink() ? QFile::remove(path) : QDir(path).removeRecursively();
}

/// The path without slashes at its end, which would make a link be followed.
QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

} // namespace

bool createFileAlwaysReplace(const QString &path)
{
    if (!isUsable(path))
        return fail(createFileMessage, path, EINVAL, 31);
    if (!isRegularFile(path))
        return makeFileAndParents(path) == 0;
    if (::unlink(QFile::encodeName(path).constData()) != 0)
        return fail(createFileMessage, path, errno, 31);
    return makeFile(path) == 0;
}

bool createDirectoryAlwaysReplace(const QString &path)
{
    const QString folder = withoutTrailingSlash(path);
    if (!isUsable(folder))
        return fail(createDirectoryMessage, path, EINVAL, 49);
    if (isFolder(folder) && !removeFolder(folder))
        return fail(createDirectoryMessage, path, errno, 49);
    return makeFolders(folder) == 0;
}

bool createFileIfNotExist(const QString &path)
{
    if (isUsable(path) && isRegularFile(path))
        return true;
    const int error = isUsable(path) ? makeFileAndParents(path) : EINVAL;
    return error == 0 || fail(createDirectoryMessage, path, error, 69);
}

bool createDirectoryIfNotExist(const QString &path)
{
    const QString folder = withoutTrailingSlash(path);
    if (isUsable(folder) && isFolder(folder))
        return true;
    const int error = isUsable(folder) ? makeFolders(folder) : EINVAL;
    return error == 0 || fail(createDirectoryMessage, path, error, 87);
}

} // namespace FileManagerCreate
