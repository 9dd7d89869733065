#include "platform/HostProcess.h"

#include "platform/linux/LanguageEnvironment.h"

#include <QFile>

#include <climits>
#include <unistd.h>

namespace platform
{

QString executableFile()
{
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
    return length > 0 ? QFile::decodeName(QByteArray(buffer, length)) : QString();
}

QStringList hostLanguages()
{
    return languagesFrom({qEnvironmentVariable("LANGUAGE"), qEnvironmentVariable("LC_ALL"),
                          qEnvironmentVariable("LC_MESSAGES"), qEnvironmentVariable("LANG")});
}

} // namespace platform
