#pragma once

#include "api/QBNetworking.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

class QBWindowController;
class QuickStartWindowController;

namespace shell
{

/// Where the introduction for a version of the client stands.
struct Introduction {
    QUrl address;
    bool isOwn = false; ///< the house's own, for the window; the general one is for the user's browser
};

/// The house's own, where its configuration names a web address, else `page`, which has a query already.
Introduction introductionFor(const ServerReply &oemConfig, const QString &page, const QString &version);

/// Shows the introduction the first time somebody signs in. Main thread; asks in the background.
class QuickStart : public QObject
{
public:
    using Opener = std::function<void(const QUrl &address)>;
    using WindowMaker = std::function<std::unique_ptr<QuickStartWindowController>()>;

    /// `openExternally` shows an address in the user's own browser. A null maker: the application's own window.
    QuickStart(QBNetworking &networking, const QString &clientVersion, Opener openExternally,
               WindowMaker makeWindow = {}, QObject *parent = nullptr);
    ~QuickStart() override;

    /// Opens it when the server says that the user has not seen the introduction yet, then tells the server.
    void openIfNeeded();
    /// The session is over: the window goes.
    void close();
    /// On the screen, else null.
    QBWindowController *visibleWindow() const;

private:
    void open(const Introduction &introduction);
    void openWindow(const QUrl &address);

    QBNetworking &networking;
    const QString clientVersion;
    const Opener openExternally;
    const WindowMaker makeWindow;
    std::unique_ptr<QuickStartWindowController> window;
    int session = 0; ///< changes with `close`; answers to questions from before are dropped
};

} // namespace shell
