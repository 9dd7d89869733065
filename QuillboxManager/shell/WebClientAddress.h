#pragma once

#include <QString>

namespace shell
{

/// What the address of the web client is made of.
struct WebClientPage {
    QString server;
    bool https = false;
    QString port;
    qint64 serverVersion = 0; ///< the server's main version
    QString userID;
    QString tokenID; ///< null: nobody is signed in
};

/// Address of the web client that opens it signed in; without a token the server's bare address.
QString webClientAddress(const WebClientPage &page);

/// Address of a help page for this version of the client.
QString helpAddress(const QString &page, const QString &version);

} // namespace shell
