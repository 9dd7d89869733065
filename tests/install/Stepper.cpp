// An installation that is killed right after one of its steps: stepper BUNDLE APPLICATION IMAGE TOOL STEP
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
    const QString tool = arguments.takeLast();
    const platform::Folders &folders = platform::host().folders;
    install::Installer installer(
        install::updateRequest(arguments).value(),
        {.images = install::AttachedImages(tool, folders.volumes()),
         .lockFolder = folders.caches(),
         .patience = {.managerEnds = 1500ms, .clientWorks = 2s, .clientStays = 300ms, .clientEnds = 1s},
         .exchange = install::exchangePaths,
         .reached = [last](install::Installer::Step step) {
             if (step == last)
                 ::raise(SIGKILL);
         }});
    return installer.run() ? 0 : 1;
}
