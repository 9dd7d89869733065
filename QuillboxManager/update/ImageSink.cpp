#include "update/ImageSink.h"

#include "platform/Log.h"
#include "update/DownloadTarget.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int StatusOk = 200;
constexpr qsizetype TellingBytes = 512;

/// Servers and portals in between answer with pages instead of errors, and not always under their own type.
bool isPage(const QByteArray &beginning)
{
    QByteArray text = beginning;
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    text = text.trimmed().toLower();
    constexpr std::array marks{"<!doctype", "<html", "<head", "<body", "<script", "<?xml", "<!--"};
    return std::any_of(marks.begin(), marks.end(), [&](const char *mark) { return text.startsWith(mark); });
}

bool isPageType(const QByteArray &contentType)
{
    const QByteArray type = contentType.toLower();
    return type.startsWith("text/") || type.startsWith("application/json") || type.startsWith("application/xhtml");
}
/// 0, or why not. Whatever came to the name meanwhile, a link included, stays.
int moveWithoutReplacing(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (::link(source.constData(), target.constData()) == 0)
        return ::unlink(source.constData()) == 0 ? 0 : errno;
    if (errno == EEXIST)
        return EEXIST;
    // File systems without second names.
    if (DownloadTarget::occupantOf(to) != DownloadTarget::Occupant::Nobody)
        return EEXIST;
    return ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
}
} // namespace

ImageSink::ImageSink(const QString &targetPath, Progress progress)
    : target(targetPath), partial(DownloadTarget::partialIn(QFileInfo(targetPath).path())), report(std::move(progress))
{
}

ImageSink::~ImageSink()
{
    if (file.isOpen())
        ::unlink(QFile::encodeName(partial).constData());
}

bool ImageSink::fail(DownloadFault reason, const QString &about)
{
    if (failure == DownloadFault::None) {
        failure = reason;
        detail = about;
    }
    return false;
}

bool ImageSink::failFor(int systemError)
{
    platform::log(QStringLiteral("The update could not be stored: %1").arg(QLatin1String(std::strerror(systemError))));
    const bool full = systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
    return fail(full ? DownloadFault::NoSpace : DownloadFault::CannotStore);
}

bool ImageSink::takes(int status, const QByteArray &contentType)
{
    if (status != StatusOk)
        return fail(DownloadFault::HttpStatus, QString::number(status));
    if (isPageType(contentType))
        return fail(DownloadFault::NotAnImage);
    if (expected <= 0)
        return fail(DownloadFault::Incomplete);
    const qint64 available = QStorageInfo(QFileInfo(target).path()).bytesAvailable();
    if (available >= 0 && expected > available)
        return fail(DownloadFault::NoSpace);
    return makeFile();
}

bool ImageSink::makeFile()
{
    const QByteArray path = QFile::encodeName(partial);
    ::unlink(path.constData()); // of a download that was killed
    constexpr mode_t mode = 0644;
    file = platform::FileDescriptor(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    return file.isOpen() || failFor(errno);
}

bool ImageSink::write(const char *bytes, qint64 count)
{
    if (count > expected - written)
        return fail(DownloadFault::Incomplete);
    beginning.append(bytes, std::min<qint64>(count, TellingBytes - beginning.size()));
    if (isPage(beginning))
        return fail(DownloadFault::NotAnImage);
    if (!append(bytes, count))
        return false;
    written += count;
    if (written == expected && !keep())
        return false;
    report(written, expected);
    return true;
}

bool ImageSink::append(const char *bytes, qint64 count)
{
    while (count > 0) {
        const ssize_t done = ::write(file.get(), bytes, static_cast<size_t>(count));
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return failFor(done < 0 ? errno : ENOSPC);
        bytes += done;
        count -= done;
    }
    return true;
}

bool ImageSink::keep()
{
    if (::fsync(file.get()) != 0 && errno != EINVAL) // some file systems cannot, and say so
        return failFor(errno);
    if (const int reason = moveWithoutReplacing(partial, target); reason != 0) {
        platform::log(QStringLiteral("Downloadapp session move %1").arg(QLatin1String(std::strerror(reason))));
        return reason == EEXIST ? fail(DownloadFault::TargetTaken, QFileInfo(target).fileName()) : failFor(reason);
    }
    file.close();
    kept = true;
    return true;
}
