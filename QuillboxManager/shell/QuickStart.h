#pragma once

#include "api/QBNetworking.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

class QuickStartWindowController;

namespace shell
{

/// Address of the introduction for this version of the client: the house's own, where its configuration names a web
/// address, else `page`, which has a query already.
QUrl introductionAddress(const ServerReply &oemConfig, const QString &page, const QString &version);

/// Shows the introduction in a window the first time somebody signs in. Main thread; asks in the background.
class QuickStart : public QObject
{
public:
    using WindowMaker = std::function<std::unique_ptr<QuickStartWindowController>()>;

    /// A null maker: the application's own window.
    QuickStart(QBNetworking &networking, const QString &clientVersion, WindowMaker makeWindow = {},
               QObject *parent = nullptr);
    ~QuickStart() override;

    /// Opens the window when the server says that the user has not seen the introduction yet, then tells the server.
    void openIfNeeded();
    /// The session is over: the window goes.
    void close();

private:
    void open(const QUrl &address);

    QBNetworking &networking;
    const QString clientVersion;
    const WindowMaker makeWindow;
    std::unique_ptr<QuickStartWindowController> window;
    int session = 0; ///< changes with `close`; answers to questions from before are dropped
};

} // namespace shell
