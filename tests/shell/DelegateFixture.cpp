#include "DelegateFixture.h"

#include "login/LoginWindowController.h"
#include "login/QBChangePasswordController.h"
#include "login/ServerSettingWindowController.h"
#include "state/NotificationNames.h"
#include "support/Files.h"

#include <QAction>
#include <QFile>
#include <QTest>

#include <csignal>

namespace testing
{

DelegateFixture::DelegateFixture()
{
    files.addReadyDriver();
}

DelegateFixture::~DelegateFixture()
{
    if (app && app->serviceRunning())
        killService();
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
    windows.login = [this] {
        return std::make_unique<LoginWindowController>(networking, defaults, center, thirdLogin);
    };
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
    const auto run = [](const QString &, const QStringList &) {
        return platform::TaskResult{.started = true, .status = 0, .output = {}};
    };
    if (!downloadApp)
        downloadApp = std::make_unique<DownloadApp>(
            networking, ground.transport,
            UpdatePlaces{host.folders.home() + QStringLiteral("/Downloads"),
                         host.folders.caches() + QStringLiteral("/installer.app"), host.folders.volumes(),
                         QStringLiteral("hdiutil"), files.bundle()},
            UpdateCommands{run, [](const QString &, const QStringList &) { return true; }});
    return *downloadApp;
}

void DelegateFixture::postLoginSuccess()
{
    center.post(NotificationNames::loginSuccess());
}

void DelegateFixture::addLastingService() const
{
    files.addService("echo \"$@\" > \"$0.arguments\"; echo $$ > \"$0.pid\"; exec sleep 60");
}

QString DelegateFixture::serviceFile(const QString &suffix) const
{
    return files.resource(QStringLiteral("FUSEService.app/Contents/MacOS/FUSEService.")) + suffix;
}

QByteArray DelegateFixture::serviceNote(const QString &suffix) const
{
    return contentOf(serviceFile(suffix));
}

void DelegateFixture::killService() const
{
    QTRY_VERIFY(serviceNote(QStringLiteral("pid")).endsWith('\n'));
    ::kill(serviceNote(QStringLiteral("pid")).trimmed().toInt(), SIGKILL);
    QFile::remove(serviceFile(QStringLiteral("pid")));
}

QWidget *DelegateFixture::visibleWindow(const QString &name)
{
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->objectName() == name && window->isVisible())
            return window;
    return nullptr;
}

QStringList DelegateFixture::entries()
{
    QStringList names;
    for (const QAction *action : delegate().statusMenu().menu()->actions())
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
