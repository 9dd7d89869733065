#pragma once

#include "api/ClientServices.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

/// Builders of URLs and request bodies, and what identifies this device. Stateless; any thread. A builder given an
/// empty argument that it needs returns null, and so does one that cannot encrypt the password.
class QBApiManager
{
public:
    static QString constructURL(const QString &base, const QString &api, const QString &queryString);

    // The older "/v1/" family beside QBNetworking's "/api/v1/" one; https where the stored server has it.
    static QString urlLoginWithServerID(const QString &serverID, const QString &authPort);
    static QString urlThirdLoginWithServerID(const QString &serverID, const QString &authPort);
    static QString urlRefreshTokenWithServerID(const QString &serverID, const QString &authPort);
    static QString urlGetUserInfo(const QString &serverID, const QString &authPort, const QString &userID,
                                  const QString &tokenID);
    static QString urlQuotaWithServerID(const QString &serverID, const QString &authPort, const QString &userID,
                                        const QString &tokenID);
    static QString urlLogoutWithServerID(const QString &serverID, const QString &authPort, const QString &userID,
                                         const QString &tokenID);
    static QString urlDirectoryListWithServerID(const QString &serverID, const QString &filePort, const QString &userID,
                                                const QString &tokenID);

    static QByteArray bodyLoginWithAccount(const QString &account, const QString &password,
                                           const std::optional<QJsonObject> &vcodeInfo,
                                           const std::optional<QJsonObject> &dualfactorauthinfo,
                                           const ClientServices &services = ClientServices::shared());
    static QByteArray bodyLoginWithTicket(const QString &ticket, const QString &authID,
                                          const ClientServices &services = ClientServices::shared());
    static QByteArray bodyLoginWithTicket1(const QJsonObject &ticket, const QString &authID,
                                           const ClientServices &services = ClientServices::shared());
    static QByteArray bodyLoginWebWithAccount(const QString &account, const QString &password,
                                              const ClientServices &services = ClientServices::shared());
    static QByteArray bodyLogout();
    static QByteArray bodyRefreshTokenWithID(const QString &tokenID, int type, const QString &userID);

    /// Standard Base64 of the ciphertext, null when the password cannot be encrypted.
    static QString encryptedPassword(const QString &password,
                                     const ClientServices &services = ClientServices::shared());
    /// `name` is "Macintosh" for sign-ins and "mac" for sending codes.
    static QJsonObject deviceInfo(const QString &name, const ClientServices &services = ClientServices::shared());

    static QString macAddress();
    static QString macAddress(const QByteArray &hardwareAddress);
    static QString systemUUID();
    static QString ipAddressFromDomain(const QString &domain) { return domain; }
    static QString randomBoundaryWithLength(int length);

    /// Pretty-printed with sorted keys, UTF-8; the same object always gives the same bytes.
    static QByteArray serialize(const QJsonObject &object);
    static QByteArray serializeCompact(const QJsonObject &object);
};
