#include "InstallLog.h"

#include "platform/FileDescriptor.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr off_t largestLog = 256 * 1024;

platform::FileDescriptor &logFile()
{
    static platform::FileDescriptor file;
    return file;
}

void write(QtMsgType, const QMessageLogContext &, const QString &text)
{
    const QByteArray line = text.toUtf8() + '\n';
    std::fputs(("appInstall: " + line).constData(), stderr);
    const QByteArray dated = QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toLatin1() + ' ' + line;
    // One call, so that lines of two processes never mix.
    const ssize_t written = ::write(logFile().get(), dated.constData(), static_cast<size_t>(dated.size()));
    static_cast<void>(written);
}

} // namespace

namespace InstallLog
{

void keepIn(const QString &folder)
{
    QDir().mkpath(folder);
    const QByteArray path = QFile::encodeName(folder + "/appInstall.log"_L1);
    logFile() = platform::FileDescriptor(
        ::open(path.constData(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct stat information = {};
    if (::fstat(logFile().get(), &information) == 0 && information.st_size > largestLog &&
        ::ftruncate(logFile().get(), 0) != 0)
        logFile().close();
    qInstallMessageHandler(write);
}

} // namespace InstallLog
