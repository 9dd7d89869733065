#include "InstallLog.h"

#include "install/ExchangePaths.h"
#include "install/Installer.h"
#include "platform/Host.h"
#include "platform/Log.h"

#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int badArguments = 64;

install::Installer::Surroundings surroundings()
{
    const platform::Host &host = platform::host();
    return {.images = install::AttachedImages(host.scripts.diskImageTool(), host.folders.volumes()),
            .lockFolder = host.folders.caches(),
            .patience = {},
            .exchange = install::exchangePaths,
            .reached = [](install::Installer::Step step) {
                platform::log(QString::fromLatin1(install::Installer::nameOf(step)));
            }};
}

/// Waits for the child; nothing when it was killed.
std::optional<int> statusOf(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return std::nullopt;
    return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QFile::decodeName(argv[index]));
    // The manager ends while this goes on, and a folder on a volume that is to be detached must not be in use.
    ::setsid();
    if (::chdir("/") != 0)
        return EXIT_FAILURE;
    // The work is done by a child, so that somebody is left to tidy up after it if it dies. No thread runs yet.
    const pid_t child = ::fork();
    InstallLog::keepIn(platform::host().folders.library() + "/Logs"_L1);
    const auto request = install::updateRequest(arguments);
    if (!request) {
        if (child == 0)
            platform::log(
                u"needed: the installed application, the new application, the disk image; or only the first"_s);
        return badArguments;
    }
    if (child == 0 && !request->isResumption())
        return install::Installer(*request, surroundings()).run() ? EXIT_SUCCESS : EXIT_FAILURE;
    if (child > 0)
        if (const std::optional<int> status = statusOf(child))
            return *status;
    platform::log(u"The installation was interrupted and is taken up again"_s);
    return install::Installer(*request, surroundings()).resume() ? EXIT_SUCCESS : EXIT_FAILURE;
}
