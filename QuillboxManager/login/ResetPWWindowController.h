#pragma once

#include "api/QBNetworking.h"
#include "login/WebWindowController.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "state/QBGlobeInformation.h"

#include <QTimer>

#include <chrono>

/// The forgotten-password window: shows the page kept among the resources, tells it language and server, and listens
/// for its word that the password was reset. Main thread; the configuration is read on the background pool. Sends the
/// user back to the sign-in window once, whatever the end. The collaborators must outlive it.
class ResetPWWindowController final : public WebWindowController
{
    Q_OBJECT
public:
    struct Collaborators {
        QBNetworking &networking = QBNetworking::sharedNetworking();
        QBGlobeInformation &globe = QBGlobeInformation::defaultGlobeInformation();
        platform::UserDefaults &defaults = platform::UserDefaults::standard();
        platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter();
        platform::UserNotifications &userNotifications = platform::host().userNotifications;
        platform::WebBrowserMaker browser = {}; ///< null: the application's own
        WebPanel::Opener openExternally = {};   ///< null: the application's own
        std::chrono::milliseconds alertDelay = std::chrono::seconds(1);
        QString page = platform::Bundle::main().pathForResource(QStringLiteral("index"), QStringLiteral("html"));
    };

    ResetPWWindowController();
    explicit ResetPWWindowController(const Collaborators &collaborators, QObject *parent = nullptr);

protected:
    void setupUi(QWidget *surface) override;
    QString title() const override;
    void windowDidLoad() override;
    bool windowShouldClose() override;

private:
    void readServerConfig(std::function<void(const ServerReply &)> then);
    void begin(const ServerReply &serverConfig);
    void didFinishNavigation();
    void didReceiveScriptMessage(const QString &name, const QVariant &body);
    void showSwitchedOff();
    void backToLogin();

    const Collaborators with;
    QTimer alertTimer;
    int navigation = 0;  ///< answers to calls from before the newest one are dropped
    bool isOver = false; ///< the user was sent back; closing says nothing more
};
