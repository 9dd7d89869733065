#pragma once

#include "api/HttpTransport.h"
#include "api/QBError.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMutex>
#include <QString>

#include <functional>
#include <optional>

class QBGlobeInformation;
namespace platform
{
class UserDefaults;
}

/// A JSON reply; nothing stands for "no reply".
using ServerReply = std::optional<QJsonObject>;
/// Completion of a sign-in: no error and no reply on success; the reply that came with an error may hold details.
using LoginHandle = std::function<void(const QBError &error, const ServerReply &reply)>;

/// What the server probe found; the integer values are those the windows and the shell act on.
enum class ServerConfigResult { Succeeded = 1, Failed = 2 };

/// The one client of the document server's JSON API. Any thread. All calls block the caller but the server probe and
/// the diagnostic variant, so they belong on the background pool (platform::inBackground). An `error` out-argument may
/// be null; it is written only when there is an error.
class QBNetworking
{
public:
    static QBNetworking &sharedNetworking();

    QBNetworking(QBGlobeInformation &globe, HttpTransport &transport, platform::UserDefaults &defaults);

    bool validateInstance() const { return this == &sharedNetworking(); }

    // Session, read from the store.
    QBGlobeInformation &globeInformation() const { return globe; }
    QString serverAddress() const;
    QString serverAuthPort() const;
    QString authPort() const { return serverAuthPort(); }
    QString userID() const;
    QString tokenID() const;
    bool isHttpsServer() const;
    bool isLogin() const;

    // Values shared about the session.
    ServerReply dicUpdateVersion() const;
    void setDicUpdateVersion(const ServerReply &reply);
    QString notLoginAccountName() const;
    void setNotLoginAccountName(const QString &name);
    QString internalLinkPrefix() const;
    qint64 allowperm() const;
    bool autoCasRedirect() const;
    bool bRequestEntryError() const;
    bool isHttpServer() const;

    // URLs.
    QString spliceURLWithServer(const QString &server, const QString &port, const QString &path) const;
    QString spliceURLWithPort(const QString &port, const QString &path) const;
    QString spliceURLWithoutMethod(const QString &api) const;
    QString spliceURLWithoutToken(const QString &api, const QString &method) const;
    QString spliceURL(const QString &api, const QString &method) const;

    // Sending. Null data: no reply. With a server error both the error and the data come back.
    QByteArray postWithURL(const QString &url, const QByteArray &body, QBError *error);
    QByteArray postWithURL1(const QString &url, const QByteArray &body, QBError *error);
    void testURLSessionURL(const QString &url, const QByteArray &body, QBError *error);
    bool reachability();
    /// True when something answers the ping of the stored server, whatever it says; path family "/api/v1/" or "/v1/".
    bool pingStoredServer(bool apiFamily);
    /// Probes HTTPS, then HTTP, and stores what answered. Returns at once; the handler runs on a background thread.
    void serverConfigWithServer(const QString &server, const QString &authPort, const QString &filePort,
                                std::function<void(ServerConfigResult)> handle);

    // Sign-in and session.
    void loginWithAccountName(const QString &account, const QString &password,
                              const std::optional<QJsonObject> &vcodeInfo,
                              const std::optional<QJsonObject> &dualfactorauthinfo, const LoginHandle &handle);
    void loginWithTicket(const QString &ticket, const QString &userName, const QString &authID,
                         const LoginHandle &handle);
    void loginWithTicketDic(const QJsonObject &ticket, const QString &userName, const QString &authID,
                            const LoginHandle &handle);
    QString getWebTokenid();
    /// "expires" of the reply, nothing on any error.
    std::optional<QJsonValue> refreshToken();
    void logoutCurrentAccountWithHandle(const std::function<void()> &handle);
    ServerReply sendAuthVCode(const QString &account, const QString &password, const QString &oldtelnum, bool authbysms,
                              bool authbyemail, QBError *error);
    ServerReply getVcode(const QString &uuid, QBError *error);
    void changeThePassword(const QString &oldPassword, const QString &newPassword, QBError *error);

    // Configuration and account.
    ServerReply getServerConfig();
    ServerReply getOEMConfigBySection(QBError *error);
    ServerReply getDocShareConfig(QBError *error);
    ServerReply getHostInfo();
    ServerReply agreedToTermsOfUse(QBError *error);
    ServerReply getAgreedToTermsOfUseState(QBError *error);
    ServerReply requestUserInfo();
    ServerReply requestQuota();
    ServerReply getConfig(QBError *error);
    void setquickstartstatus(QBError *error);
    ServerReply requestCheckClientVersion(QBError *error);
    ServerReply requestDownloadUrl(QBError *error);

    /// Told, on the main thread, when a call failed in a way the file-system service's user should hear of.
    void setServiceErrorReporter(std::function<void(const QBError &)> reporter);

    void deleteCookies() { transport.deleteCookies(); }

private:
    ServerReply call(const QString &url, const QByteArray &body, QBError *error);

    QBGlobeInformation &globe;
    HttpTransport &transport;
    platform::UserDefaults &defaults;
    mutable QMutex mutex; ///< guards the shared values below
    ServerReply updateVersion;
    QString accountNameInProgress;
    QString linkPrefix;
    qint64 allowedPermissions = 0;
    bool casRedirect = false;
    bool entryRequestFailed = false;
    bool httpOnly = false;
    std::function<void(const QBError &)> serviceErrorReporter;
};
