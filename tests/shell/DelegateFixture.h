#pragma once

#include "ShellFixture.h"

#include "server/ServerFixture.h"
#include "shell/AppDelegate.h"

#include <QApplication>
#include <QWidget>

#include <atomic>
#include <memory>
#include <mutex>

namespace testing
{

/// A desktop without a tray.
struct NoTray : shell::TrayHost {
    void watch() override {}
    static std::unique_ptr<shell::TrayHost> make() { return std::make_unique<NoTray>(); }
};

/// The whole controller with its real windows, on a host of doubles and, where wanted, a real document server.
struct DelegateFixture : ShellFixture {
    DelegateFixture();

    /// Starts the document server and stores its address.
    void useServer(const QJsonObject &scenario = {});
    /// A session that the server knows; makes the server when there is none.
    void signInAtServer();
    AppDelegate &delegate();
    void postLoginSuccess();
    DownloadApp &installer();
    QStringList installerCommands();
    /// A companion that stays until it is told or killed, and keeps its argument and process id.
    void addLastingService() const;
    QByteArray serviceNote(const QString &suffix) const;
    void forgetServiceNotes() const;

    bool loginShows() { return isVisible(delegate().loginFlow().loginWindow()); }
    bool serverWindowShows() { return isVisible(delegate().loginFlow().serverSettingWindow()); }
    static bool isVisible(const QBWindowController *controller) { return controller && controller->isVisible(); }
    static QWidget *visibleWindow(const QString &name);
    static QStringList allEntries(AppDelegate &delegate);
    static QStringList visibleEntries(AppDelegate &delegate);
    QStringList posted() const;

    std::unique_ptr<ServerFixture> server;
    std::shared_ptr<std::atomic<bool>> fontThere = std::make_shared<std::atomic<bool>>(true);
    QBClearCacheInformation clearCache{folder.filePath(QStringLiteral("clearCache.plist"))};
    int ended = 0;
    std::mutex commandMutex;
    QStringList commands;                     ///< of the installer, which finds nothing with them
    std::unique_ptr<DownloadApp> downloadApp; ///< waits for its work before what stands above goes
    std::unique_ptr<AppDelegate> app;
};

} // namespace testing
