#include "install/BundleCopy.h"

#include "platform/FileDescriptor.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <array>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace install
{

namespace
{

constexpr int mostEntries = 200'000;
constexpr qint64 mostBytes = qint64(4) * 1024 * 1024 * 1024;
constexpr int mostLevels = 64;

QString failure(const QString &path)
{
    return u"%1: %2"_s.arg(path, QString::fromLocal8Bit(std::strerror(errno)));
}

bool writeAll(int descriptor, const char *bytes, ssize_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, static_cast<size_t>(size));
        if (written < 0)
            return false;
        bytes += written;
        size -= written;
    }
    return true;
}

class Copying
{
public:
    /// Null when the folder and all below it are copied.
    QString folder(const QString &from, const QString &to, int depth);

private:
    QString entry(const QString &from, const QString &to, int depth);
    QString file(const QString &from, const QString &to, mode_t mode);
    static QString link(const QString &from, const QString &to, int depth);

    int entries = 0;
    qint64 bytes = 0;
    std::vector<char> buffer = std::vector<char>(1024 * 1024);
};

QString Copying::folder(const QString &from, const QString &to, int depth)
{
    if (depth > mostLevels)
        return u"%1 lies too deep"_s.arg(from);
    if (::mkdir(QFile::encodeName(to).constData(), 0755) != 0)
        return failure(to);
    const QDir source(from);
    if (!source.isReadable())
        return u"%1 cannot be read"_s.arg(from);
    for (const QString &name :
         source.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        if (++entries > mostEntries)
            return u"it holds too many files"_s;
        const QString problem = entry(from + u'/' + name, to + u'/' + name, depth);
        if (!problem.isNull())
            return problem;
    }
    return {};
}

QString Copying::entry(const QString &from, const QString &to, int depth)
{
    struct stat information = {};
    if (::lstat(QFile::encodeName(from).constData(), &information) != 0)
        return failure(from);
    if (S_ISDIR(information.st_mode))
        return folder(from, to, depth + 1);
    if (S_ISLNK(information.st_mode))
        return link(from, to, depth);
    if (S_ISREG(information.st_mode))
        return file(from, to, (information.st_mode & 0755) | S_IRUSR | S_IWUSR);
    return u"%1 is neither file nor folder"_s.arg(from);
}

QString Copying::file(const QString &from, const QString &to, mode_t mode)
{
    const platform::FileDescriptor source(
        ::open(QFile::encodeName(from).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!source.isOpen())
        return failure(from);
    platform::FileDescriptor target(
        ::open(QFile::encodeName(to).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!target.isOpen())
        return failure(to);
    for (;;) {
        const ssize_t got = ::read(source.get(), buffer.data(), buffer.size());
        if (got < 0)
            return failure(from);
        if (got == 0)
            break;
        bytes += got;
        if (bytes > mostBytes)
            return u"it is too large"_s;
        if (!writeAll(target.get(), buffer.data(), got))
            return failure(to);
    }
    ::fchmod(target.get(), mode); // whatever the mask of this process
    return target.close() ? QString() : failure(to);
}

QString Copying::link(const QString &from, const QString &to, int depth)
{
    const QString target = linkTarget(from);
    if (!leadsInside(target, depth))
        return u"%1 leads out of it"_s.arg(from);
    const int result = ::symlink(QFile::encodeName(target).constData(), QFile::encodeName(to).constData());
    return result == 0 ? QString() : failure(to);
}

} // namespace

QString linkTarget(const QString &link)
{
    std::array<char, PATH_MAX> target;
    const ssize_t length = ::readlink(QFile::encodeName(link).constData(), target.data(), target.size());
    return length > 0 ? QFile::decodeName(QByteArray(target.data(), length)) : QString();
}

bool leadsInside(const QString &target, int depth)
{
    if (target.isEmpty() || target.startsWith(u'/'))
        return false;
    bool descends = false;
    for (const QString &part : target.split(u'/')) {
        if (part == ".."_L1 && (descends || --depth < 0))
            return false;
        descends = descends || part != ".."_L1;
    }
    return true;
}

QString copyBundle(const QString &from, const QString &to)
{
    return Copying().folder(from, to, 0);
}

} // namespace install
