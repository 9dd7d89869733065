#pragma once

#include "ShellFixture.h"

#include "login/ThirdLoginOpener.h"
#include "server/ServerFixture.h"
#include "shell/AppDelegate.h"

#include <QApplication>
#include <QWidget>

#include <atomic>
#include <memory>

namespace testing
{

/// A desktop without a tray.
struct NoTray : shell::TrayHost {
    void watch() override {}
    static std::unique_ptr<shell::TrayHost> make() { return std::make_unique<NoTray>(); }
};

/// An application without a browser.
struct NoThirdLogin : ThirdLoginOpener {
    bool open(const QString &, const QString &) override { return false; }
};

/// The whole controller with its real windows, on a host of doubles and, where wanted, a real document server.
struct DelegateFixture : ShellFixture {
    DelegateFixture();
    ~DelegateFixture();

    /// Starts the document server and stores its address.
    void useServer(const QJsonObject &scenario = {});
    /// A session that the server knows; makes the server when there is none.
    void signInAtServer();
    AppDelegate &delegate();
    void postLoginSuccess();
    /// Finds nothing with its tools.
    DownloadApp &installer();
    /// A companion that stays until it is killed, at the latest with this object, and notes its "arguments" and "pid".
    void addLastingService() const;
    QByteArray serviceNote(const QString &suffix) const;
    /// Once it has noted its process id.
    void killService() const;

    bool loginShows() { return isVisible(delegate().loginFlow().loginWindow()); }
    bool serverWindowShows() { return isVisible(delegate().loginFlow().serverSettingWindow()); }
    static bool isVisible(const QBWindowController *controller) { return controller && controller->isVisible(); }
    static QWidget *visibleWindow(const QString &name);
    /// Object names of the status menu's entries.
    QStringList entries();
    QStringList posted() const;
    QString serviceFile(const QString &suffix) const;

    std::unique_ptr<ServerFixture> server;
    std::shared_ptr<std::atomic<bool>> fontThere = std::make_shared<std::atomic<bool>>(true);
    QBClearCacheInformation clearCache{folder.filePath(QStringLiteral("clearCache.plist"))};
    NoThirdLogin thirdLogin;
    int ended = 0;
    std::unique_ptr<DownloadApp> downloadApp; ///< waits for its work before what stands above goes
    std::unique_ptr<AppDelegate> app;
};

} // namespace testing
