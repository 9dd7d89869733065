#pragma once

#include "api/QBNetworking.h"

#include <QObject>
#include <QString>

namespace platform
{
class Workspace;
}

namespace shell
{

/// Shows the introduction in the user's browser the first time somebody signs in. Main thread; asks in the background.
class QuickStart : public QObject
{
public:
    QuickStart(QBNetworking &networking, platform::Workspace &workspace, const QString &clientVersion,
               QObject *parent = nullptr);

    /// Opens the page when the server says that the user has not seen it yet, then tells the server.
    void openIfNeeded();

private:
    QBNetworking &networking;
    platform::Workspace &workspace;
    const QString clientVersion;
};

} // namespace shell
