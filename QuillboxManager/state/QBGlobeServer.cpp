#include "state/QBGlobeServer.h"

#include "state/RecordEntries.h"

namespace
{
const QString addressKey = QStringLiteral("server");
const QString authPortKey = QStringLiteral("authPort");
const QString useHttpsKey = QStringLiteral("useHttps");
} // namespace

QBGlobeServer QBGlobeServer::initWithDic(const QVariantMap &dictionary)
{
    QBGlobeServer server;
    server.address = RecordEntries::text(dictionary, addressKey);
    server.authPort = RecordEntries::text(dictionary, authPortKey);
    server.useHttps = RecordEntries::flag(dictionary, useHttpsKey);
    return server;
}

QVariantMap QBGlobeServer::descriptor() const
{
    QVariantMap dictionary;
    RecordEntries::insert(dictionary, addressKey, address);
    RecordEntries::insert(dictionary, authPortKey, authPort);
    if (useHttps)
        dictionary.insert(useHttpsKey, *useHttps);
    return dictionary;
}
