#pragma once

#include "api/ClientServices.h"
#include "api/DocumentCalls.h"
#include "api/HttpTransport.h"
#include "api/QBError.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>

class QBGlobeInformation;
struct QBGlobeAccount;
namespace platform
{
class UserDefaults;
}

/// Completion of a sign-in: no error and no reply on success; the reply that came with an error may hold details.
using LoginHandle = std::function<void(const QBError &error, const ServerReply &reply)>;

/// What the server probe found; the integer values are those the windows and the shell act on.
enum class ServerConfigResult { Succeeded = 1, Failed = 2 };

/// A reply with what it says: the document is null when it is no JSON, and the error is the transport's or the
/// server's.
struct ServerAnswer {
    HttpReply reply;
    QJsonDocument document;
    QBError error;

    /// Nothing when the reply is no object.
    ServerReply object() const;
};

/// The one client of the document server's JSON API. Any thread. All calls block the caller but the server probe and
/// the diagnostic variant, so they belong on the background pool (platform::inBackground). An `error` out-argument may
/// be null; it is written only when there is an error.
class QBNetworking : public DocumentCalls
{
public:
    static QBNetworking &sharedNetworking();

    /// What is handed over outlives the object.
    QBNetworking(QBGlobeInformation &globe, HttpTransport &transport, platform::UserDefaults &defaults,
                 const ClientServices &services = ClientServices::shared());
    /// Waits for the probes and diagnostic calls in progress; shut the transport down first to make that short.
    ~QBNetworking() override;
    QBNetworking(const QBNetworking &) = delete;
    QBNetworking &operator=(const QBNetworking &) = delete;

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
    bool autoCasRedirect() const;
    bool isHttpServer() const;

    // URLs.
    QString spliceURLWithServer(const QString &server, const QString &port, const QString &path) const;
    QString spliceURLWithPort(const QString &port, const QString &path) const;
    QString spliceURLWithoutMethod(const QString &api) const;
    QString spliceURLWithoutToken(const QString &api, const QString &method) const;
    QString spliceURL(const QString &api, const QString &method) const;

    // Sending. Null data: no reply; empty data: an empty reply. With a server error both the error and the data come
    // back.
    QByteArray postWithURL(const QString &url, const QByteArray &body, QBError *error);
    QByteArray postWithURL1(const QString &url, const QByteArray &body, QBError *error);
    /// For requests with contents that are streamed: a stall time-out of the length of a call stands for the total one.
    /// An error is logged.
    ServerAnswer transfer(HttpRequest request);
    void testURLSessionURL(const QString &url, const QByteArray &body, QBError *error);
    bool reachability();
    /// True when something answers the ping of the stored server, whatever it says; path family "/api/v1/" or "/v1/".
    bool pingStoredServer(bool apiFamily);
    /// Signs out, probes HTTPS, then HTTP, and stores what answered. Returns at once; the handler runs once, on a
    /// background thread. A probe or sign-in that a later one overtook stores nothing and ends as failed.
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
    /// Ends within the short time-out of its own: the user waits for it.
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

    // Contents held in memory; null on failure. DocumentTransfer moves contents of any size.
    /// `size` bytes from `offset`, fewer at the end of the document.
    QByteArray requestFileDataWithDocID(const QString &docid, qint64 size, qint64 offset, QBError *error = nullptr);
    /// The whole document, of a gigabyte at most; `totalSize` may be null.
    QByteArray requestFileDataWithDocID(const QString &docid, qint64 *totalSize, QBError *error = nullptr);
    ServerReply requestCreateFileWithParentDocID(const QString &parentDocid, const QString &name, QBError *error);
    ServerReply requestUploadFileWithDocID(const QString &docid, const QByteArray &contents, QBError *error = nullptr);

    /// Told, on the main thread, when a call failed in a way the file-system service's user should hear of.
    void setServiceErrorReporter(std::function<void(const QBError &)> reporter);

    void deleteCookies() { transport.deleteCookies(); }

private:
    enum class ReplyShape { Object, Array };
    enum class Delivery { Usual, Once }; ///< Once: never sent a second time by the transport itself

    HttpRequest requestFor(const QString &url, const QByteArray &body) const;
    ServerAnswer exchange(const HttpRequest &request, ReplyShape shape);
    QByteArray send(const QString &url, const QByteArray &body, ReplyShape shape, QBError *error);
    ServerReply call(const HttpRequest &request, QBError *error);
    ServerReply call(const QString &url, const QByteArray &body, QBError *error, Delivery delivery = Delivery::Usual);
    ServerReply callOrNothing(const QString &url, const QByteArray &body);
    HttpRequest requestFor(const DocumentCall &call) const;
    ServerReply request(const DocumentCall &call, QBError *error) override;
    ServerList requestList(const DocumentCall &call, ListErrors errors, QBError *error) override;
    QString currentUserID() const override { return userID(); }
    void reportToService(const QBError &error) override;
    HttpReply ping(const QString &url, std::chrono::milliseconds timeout);
    void runInBackground(std::function<void()> work);
    bool probe(const QString &server, const QString &authPort, bool https, quint64 attempt);

    quint64 beginAttempt();
    bool isLatest(quint64 attempt) const;
    /// No error once the session is in memory and in the file, which the companion reads.
    QBError storeSession(quint64 attempt, const QBGlobeAccount &account);
    /// Unless a session other than that of `token` was opened meanwhile.
    void storeSignedOut(quint64 attempt, const QString &token);
    QBError openSession(quint64 attempt, const QString &name, const QJsonObject &reply);
    void signIn(const QString &url, const QByteArray &body, const QString &name, const LoginHandle &handle);

    QBGlobeInformation &globe;
    HttpTransport &transport;
    platform::UserDefaults &defaults;
    const ClientServices services;
    mutable std::mutex mutex; ///< guards what follows
    ServerReply updateVersion;
    QString accountNameInProgress;
    QString linkPrefix;
    bool casRedirect = false;
    bool httpOnly = false;
    std::function<void(const QBError &)> serviceErrorReporter;
    quint64 latestAttempt = 0; ///< of the sign-ins, probes and logouts; only the latest may change the session
    int backgroundCalls = 0;
    std::condition_variable backgroundCallEnded;
};
