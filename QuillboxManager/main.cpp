#include "install/Leftovers.h"
#include "platform/Bundle.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "shell/AppDelegate.h"
#include "shell/EarlySteps.h"
#include "shell/ExitSignals.h"
#include "shell/ProcessEnd.h"
#include "shell/SignalHandler.h"
#include "shell/SingleInstance.h"
#include "shell/UncaughtExceptionHandler.h"
#include "ui/StyleKit.h"
#include "ui/TestIdentifiers.h"
#include "update/DownloadTarget.h"
#include "update/UpdatePlaces.h"

#include <QApplication>
#include <QFile>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <utility>

namespace
{
/// From the first window to the last; the application's controller lives as long as this.
int run(QApplication &application, const platform::Bundle &bundle, const shell::EarlySteps &earlySteps)
{
    shell::ShellContext context = shell::ShellContext::ofApplication();
    context.earlySteps = earlySteps;
    AppDelegate delegate(std::move(context));
    const shell::ExitSignals signals([&delegate] { delegate.terminateWithoutAsking(); });
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &delegate,
                     &AppDelegate::terminateWithoutAsking);
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
    delegate.handleArguments(QCoreApplication::arguments().mid(1));
    delegate.applicationDidFinishLaunching();
    // The event loop runs: this version works, which an installer may be waiting to hear.
    QTimer::singleShot(0, &application, [&bundle] {
        platform::dispatchGlobal([&bundle] {
            QFile::remove(DownloadTarget::partialIn(UpdatePlaces::ofHost().downloads));
            install::clearLeftovers(platform::host(), bundle);
        });
    });
    return QApplication::exec();
}
} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::puts(qPrintable(platform::Bundle::main().shortVersion()));
        return 0;
    }
    // The embedded browser paints by itself; without this every start loads the desktop's graphics drivers.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    UncaughtExceptionHandler::installUncaughtExceptionHandler();
    SignalHandler::installSignalHandler();
    const platform::Bundle &bundle = platform::Bundle::main();
    if (shell::SingleInstance::yieldToOtherCopy(platform::host(), bundle, argc, argv))
        return 0;
    install::watchTrial(platform::host(), bundle, UpdatePlaces::ofHost().installerProgram());
    const shell::EarlySteps earlySteps = shell::EarlySteps::begin(platform::host(), bundle);

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillbox"));
    QApplication::setDesktopFileName(bundle.identifier());
    QApplication::setQuitOnLastWindowClosed(false);
    platform::loadLocalization(bundle.resourcePath() + QStringLiteral("/translations"));
    StyleKit::install();
    TestIdentifiers::installIfWanted();
    return shell::endProcess(run(application, bundle, earlySteps));
}
