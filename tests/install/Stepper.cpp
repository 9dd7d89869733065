// An installation that is killed right after one of its steps: stepper BUNDLE APPLICATION IMAGE STEP
#include "install/ExchangePaths.h"
#include "install/Installer.h"
#include "platform/Host.h"

#include <QFile>

#include <csignal>

using namespace std::chrono_literals;

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QFile::decodeName(argv[index]));
    const auto last = static_cast<install::Installer::Step>(arguments.takeLast().toInt());
    const auto request = install::updateRequest(arguments);
    if (!request)
        return 64;
    const platform::Host &host = platform::host();
    install::Installer installer(
        *request, {.images = install::AttachedImages(host.scripts.diskImageTool(), host.folders.volumes()),
                   .lockFolder = host.folders.caches(),
                   .patience = {.managerEnds = 1500ms, .clientWorks = 2s, .clientStays = 300ms, .clientEnds = 1s},
                   .exchange = install::exchangePaths,
                   .reached = [last](install::Installer::Step step) {
                       if (step == last)
                           ::raise(SIGKILL);
                   }});
    return installer.run() ? 0 : 1;
}
