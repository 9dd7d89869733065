#include "DelegateFixture.h"

#include "login/LoginWindowController.h"
#include "login/QBChangePasswordController.h"
#include "login/ServerSettingWindowController.h"
#include "state/NotificationNames.h"

#include <QAction>
#include <QFile>

namespace testing
{

DelegateFixture::DelegateFixture()
{
    files.addReadyDriver();
}

void DelegateFixture::useServer(const QJsonObject &scenario)
{
    server = std::make_unique<ServerFixture>(scenario);
    storeServer(server->server->httpPort());
    ground.certificate = server->options().certificateExport;
}

void DelegateFixture::signInAtServer()
{
    if (!server)
        useServer();
    const Answer answer = server->signIn(demoName(), demoPassword());
    globe.setServer({QStringLiteral("127.0.0.1"), QString::number(server->server->httpPort()), false});
    globe.setAccount({demoName(), answer.json.value(QStringLiteral("userid")).toString(),
                      answer.json.value(QStringLiteral("tokenid")).toString()});
    globe.update();
    server->server->clearCalls();
}

AppDelegate &DelegateFixture::delegate()
{
    if (app)
        return *app;
    shell::LoginWindowFactory windows;
    windows.login = [this] { return std::make_unique<LoginWindowController>(networking, defaults, center); };
    windows.serverSetting = [this] {
        return std::make_unique<ServerSettingWindowController>(networking, defaults, center);
    };
    windows.changePassword = [this] {
        return std::make_unique<QBChangePasswordController>(networking, center, host.volumes, host.distributed);
    };
    app = std::make_unique<AppDelegate>(shell::ShellContext{
        .host = host.host,
        .networking = networking,
        .defaults = defaults,
        .center = center,
        .bundle = files.bundle(),
        .windows = windows,
        .present = alerts.presenter(),
        .makeSettings =
            [this](shell::ChangePasswordWindow passwords) {
                return std::make_unique<SettingWindowsController>(std::move(passwords), networking, clearCache,
                                                                  host.workspace, files.bundle());
            },
        .makeTrayHost = NoTray::make,
        .fontNames =
            [there = fontThere] { return *there ? QStringList{QStringLiteral("Noto Sans CJK SC")} : QStringList(); },
        .serviceWatchInterval = std::chrono::milliseconds(50),
        .serviceStopPatience = std::chrono::milliseconds(300),
        .forwardingRetry = std::chrono::milliseconds(50),
        .endEventLoop = [this] { ++ended; },
        .installer = [this]() -> DownloadApp & { return installer(); },
    });
    return *app;
}

DownloadApp &DelegateFixture::installer()
{
    const auto note = [this](const QString &program, const QStringList &arguments) {
        const std::lock_guard lock(commandMutex);
        commands.append(program + u' ' + arguments.join(u' '));
    };
    const auto run = [note](const QString &program, const QStringList &arguments) {
        note(program, arguments);
        return platform::TaskResult{.started = true, .status = 0, .output = {}};
    };
    const auto launch = [note](const QString &program, const QStringList &arguments) {
        note(program, arguments);
        return true;
    };
    if (!downloadApp)
        downloadApp = std::make_unique<DownloadApp>(
            networking, ground.transport,
            UpdatePlaces{host.folders.home() + QStringLiteral("/Downloads"),
                         host.folders.caches() + QStringLiteral("/installer.app"), host.folders.volumes(),
                         QStringLiteral("hdiutil"), files.bundle()},
            UpdateCommands{run, launch});
    return *downloadApp;
}

QStringList DelegateFixture::installerCommands()
{
    const std::lock_guard lock(commandMutex);
    return commands;
}

void DelegateFixture::postLoginSuccess()
{
    center.post(NotificationNames::loginSuccess());
}

void DelegateFixture::addLastingService() const
{
    files.addService("echo \"$@\" > \"$0.arguments\"; echo $$ > \"$0.pid\"; exec sleep 60");
}

QByteArray DelegateFixture::serviceNote(const QString &suffix) const
{
    QFile file(files.resource(QStringLiteral("FUSEService.app/Contents/MacOS/FUSEService.")) + suffix);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

void DelegateFixture::forgetServiceNotes() const
{
    for (const QString &suffix : {QStringLiteral("arguments"), QStringLiteral("pid")})
        QFile::remove(files.resource(QStringLiteral("FUSEService.app/Contents/MacOS/FUSEService.")) + suffix);
}

QWidget *DelegateFixture::visibleWindow(const QString &name)
{
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->objectName() == name && window->isVisible())
            return window;
    return nullptr;
}

QStringList DelegateFixture::allEntries(AppDelegate &delegate)
{
    QStringList names;
    for (const QAction *action : delegate.statusMenu().menu()->actions())
        names.append(action->objectName());
    return names;
}

QStringList DelegateFixture::visibleEntries(AppDelegate &delegate)
{
    QStringList names;
    for (const QAction *action : delegate.statusMenu().menu()->actions())
        if (action->isVisible() && action->isEnabled() && !action->menu())
            names.append(action->objectName());
    return names;
}

QStringList DelegateFixture::posted() const
{
    QStringList names;
    for (const auto &[name, information] : host.distributed.posted)
        names.append(name);
    return names;
}

} // namespace testing
