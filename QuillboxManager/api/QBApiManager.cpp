#include "api/QBApiManager.h"

#include "files/DataValidation.h"
#include "platform/Host.h"
#include "state/QBGlobeInformation.h"

#include <QJsonDocument>
#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr int systemMac = 5;                    // "ostype" of this client
constexpr qsizetype longestHardwareAddress = 8; // bytes

bool anyEmpty(std::initializer_list<QString> arguments)
{
    return std::any_of(arguments.begin(), arguments.end(), [](const QString &text) { return text.isEmpty(); });
}

/// "http(s)://server:port/v1/" + `tail`, null when one of the arguments is empty.
QString oldUrl(const QString &server, const QString &port, const QString &tail)
{
    if (anyEmpty({server, port}))
        return {};
    const bool https = QBGlobeInformation::defaultGlobeInformation().server().useHttps.value_or(false);
    return u"http"_s + (https ? u"s"_s : QString()) + u"://"_s + server + u":"_s + port + u"/v1/"_s + tail;
}

QString oldUrl(const QString &server, const QString &port, const QString &tail, const QString &userID,
               const QString &tokenID)
{
    if (anyEmpty({userID, tokenID}))
        return {};
    return oldUrl(server, port, tail + u"&userid="_s + userID + u"&tokenid="_s + tokenID);
}

} // namespace

QString QBApiManager::constructURL(const QString &base, const QString &api, const QString &queryString)
{
    return anyEmpty({base, api, queryString}) ? QString() : base + u"/api/v1"_s + api + queryString;
}

QString QBApiManager::urlLoginWithServerID(const QString &serverID, const QString &authPort)
{
    return oldUrl(serverID, authPort, u"auth1?method=getnew"_s);
}

QString QBApiManager::urlThirdLoginWithServerID(const QString &serverID, const QString &authPort)
{
    return oldUrl(serverID, authPort, u"auth1?method=getbythirdparty"_s);
}

QString QBApiManager::urlRefreshTokenWithServerID(const QString &serverID, const QString &authPort)
{
    return oldUrl(serverID, authPort, u"auth1?method=refreshtoken"_s);
}

QString QBApiManager::urlGetUserInfo(const QString &serverID, const QString &authPort, const QString &userID,
                                     const QString &tokenID)
{
    return oldUrl(serverID, authPort, u"user?method=get"_s, userID, tokenID);
}

QString QBApiManager::urlQuotaWithServerID(const QString &serverID, const QString &authPort, const QString &userID,
                                           const QString &tokenID)
{
    return oldUrl(serverID, authPort, u"entrydoc2?method=getuserquota"_s, userID, tokenID);
}

QString QBApiManager::urlLogoutWithServerID(const QString &serverID, const QString &authPort, const QString &userID,
                                            const QString &tokenID)
{
    return oldUrl(serverID, authPort, u"auth1?method=logout"_s, userID, tokenID);
}

QString QBApiManager::urlDirectoryListWithServerID(const QString &serverID, const QString &filePort,
                                                   const QString &userID, const QString &tokenID)
{
    return oldUrl(serverID, filePort, u"dir?method=list"_s, userID, tokenID);
}

QByteArray QBApiManager::bodyLoginWithAccount(const QString &account, const QString &password,
                                              const std::optional<QJsonObject> &vcodeInfo,
                                              const std::optional<QJsonObject> &dualfactorauthinfo,
                                              const ClientServices &services)
{
    const QString encrypted = encryptedPassword(password, services);
    if (anyEmpty({account, password, encrypted}))
        return {};
    return serialize({{u"account"_s, account},
                      {u"password"_s, encrypted},
                      {u"deviceinfo"_s, deviceInfo(u"Macintosh"_s, services)},
                      {u"vcodeinfo"_s, vcodeInfo.value_or(QJsonObject())},
                      {u"dualfactorauthinfo"_s, dualfactorauthinfo.value_or(QJsonObject())}});
}

QByteArray QBApiManager::bodyLoginWithTicket(const QString &ticket, const QString &authID,
                                             const ClientServices &services)
{
    return ticket.isEmpty() ? QByteArray() : bodyLoginWithTicket1({{u"ticket"_s, ticket}}, authID, services);
}

QByteArray QBApiManager::bodyLoginWithTicket1(const QJsonObject &ticket, const QString &authID,
                                              const ClientServices &services)
{
    if (authID.isEmpty())
        return {};
    return serialize(
        {{u"thirdpartyid"_s, authID}, {u"params"_s, ticket}, {u"deviceinfo"_s, deviceInfo(u"Macintosh"_s, services)}});
}

QByteArray QBApiManager::bodyLoginWebWithAccount(const QString &account, const QString &password,
                                                 const ClientServices &services)
{
    const QString encrypted = encryptedPassword(password, services);
    if (anyEmpty({account, password, encrypted}))
        return {};
    return serialize(
        {{u"account"_s, account}, {u"password"_s, encrypted}, {u"deviceinfo"_s, deviceInfo(u"Macintosh"_s, services)}});
}

QByteArray QBApiManager::bodyLogout()
{
    return serialize({{u"ostype"_s, systemMac}});
}

QByteArray QBApiManager::bodyRefreshTokenWithID(const QString &tokenID, int type, const QString &userID)
{
    if (anyEmpty({tokenID, userID}))
        return {};
    return serialize({{u"tokenid"_s, tokenID}, {u"expirestype"_s, type}, {u"userid"_s, userID}});
}

QString QBApiManager::encryptedPassword(const QString &password, const ClientServices &services)
{
    if (password.isEmpty())
        return {};
    const std::optional<MXRRSA> encryptor = services.encryptor();
    const QByteArray cipher = encryptor ? encryptor->encryptWithString(password) : QByteArray();
    return cipher.isEmpty() ? QString() : DataValidation::base64EncodedString(cipher);
}

QJsonObject QBApiManager::deviceInfo(const QString &name, const ClientServices &services)
{
    return {{u"ostype"_s, systemMac},
            {u"devicetype"_s, u"Mac"_s},
            {u"name"_s, name},
            {u"udid"_s, macAddress(services.hardwareAddress())}};
}

QString QBApiManager::macAddress()
{
    return macAddress(ClientServices::shared().hardwareAddress());
}

QString QBApiManager::macAddress(const QByteArray &hardwareAddress)
{
    QString digits = QString::fromLatin1(hardwareAddress.left(longestHardwareAddress).toHex().toUpper());
    if (digits.size() == 12)
        for (const int position : {10, 8, 6, 4, 2})
            digits.insert(position, u'-');
    return digits.isNull() ? u""_s : digits;
}

QString QBApiManager::systemUUID()
{
    return platform::host().device.systemUUID();
}

QString QBApiManager::randomBoundaryWithLength(int length)
{
    static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    constexpr int letterCount = sizeof letters - 1;
    QString boundary(std::max(0, length), Qt::Uninitialized);
    for (QChar &letter : boundary)
        letter = QLatin1Char(letters[QRandomGenerator::system()->bounded(letterCount)]);
    return boundary;
}

QByteArray QBApiManager::serialize(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

QByteArray QBApiManager::serializeCompact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}
