#include "api/QBApiManager.h"
#include "api/QBNetworking.h"
#include "api/ServerReplies.h"

#include "files/PathUtils.h"
#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "state/PersistentKeys.h"
#include "state/QBGlobeInformation.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr int renewableToken = 2; // "expirestype"

} // namespace

quint64 QBNetworking::beginAttempt()
{
    const std::lock_guard lock(mutex);
    return ++latestAttempt;
}

bool QBNetworking::isLatest(quint64 attempt) const
{
    const std::lock_guard lock(mutex);
    return attempt == latestAttempt;
}

QBError QBNetworking::storeSession(quint64 attempt, const QBGlobeAccount &account)
{
    QBGlobeAccount before;
    {
        const std::lock_guard lock(mutex);
        if (attempt != latestAttempt)
            return transportError(TransportError::Cancelled);
        before = globe.account();
        globe.setAccount(account);
    }
    if (globe.update()) // outside the lock, which the main thread takes too
        return {};
    const std::lock_guard lock(mutex);
    if (attempt == latestAttempt)
        globe.setAccount(before);
    return transportError(TransportError::SessionNotKept);
}

void QBNetworking::storeSignedOut(quint64 attempt, const QString &token)
{
    QBGlobeAccount signedOut;
    signedOut.name = signedOut.userID = signedOut.tokenID = u""_s;
    {
        const std::lock_guard lock(mutex);
        // A sign-in that came meanwhile and failed has left the session that ends here.
        if (attempt != latestAttempt && globe.account().tokenID != token)
            return;
        globe.setAccount(signedOut);
    }
    globe.update(); // outside the lock, which the main thread takes too
}

QBError QBNetworking::openSession(quint64 attempt, const QString &name, const QJsonObject &reply)
{
    QBGlobeAccount account;
    account.name = name;
    account.userID = ServerReplies::text(reply.value(u"userid"_s));
    account.tokenID = ServerReplies::text(reply.value(u"tokenid"_s));
    if (account.userID.isEmpty() || account.tokenID.isEmpty())
        return transportError(TransportError::BadReply);
    return storeSession(attempt, account);
}

void QBNetworking::signIn(const QString &url, const QByteArray &body, const QString &name, const LoginHandle &handle)
{
    const quint64 attempt = beginAttempt();
    QBError error;
    const ServerReply reply = call(url, body, &error, Delivery::Once);
    if (!error && !reply)
        error = transportError(TransportError::BadReply);
    if (!error && !reply->contains(u"expires"_s))
        return; // no completion: the server neither opened a session nor refused one
    if (!error)
        error = openSession(attempt, name, *reply);
    if (handle)
        handle(error, error ? reply : ServerReply());
    if (error)
        return;
    if (!refreshToken())
        platform::log(u"WORRING: refreshToken failed!"_s);
}

void QBNetworking::loginWithAccountName(const QString &account, const QString &password,
                                        const std::optional<QJsonObject> &vcodeInfo,
                                        const std::optional<QJsonObject> &dualfactorauthinfo, const LoginHandle &handle)
{
    setNotLoginAccountName(account);
    const QByteArray body =
        QBApiManager::bodyLoginWithAccount(account, password, vcodeInfo, dualfactorauthinfo, services);
    signIn(spliceURLWithoutToken(u"auth1"_s, u"getnew"_s), body, account, handle);
}

void QBNetworking::loginWithTicket(const QString &ticket, const QString &userName, const QString &authID,
                                   const LoginHandle &handle)
{
    setNotLoginAccountName(userName);
    signIn(spliceURL(u"auth1"_s, u"getbythirdparty"_s), QBApiManager::bodyLoginWithTicket(ticket, authID, services),
           userName, handle);
}

void QBNetworking::loginWithTicketDic(const QJsonObject &ticket, const QString &userName, const QString &authID,
                                      const LoginHandle &handle)
{
    setNotLoginAccountName(userName);
    signIn(spliceURL(u"auth1"_s, u"getbythirdparty"_s), QBApiManager::bodyLoginWithTicket1(ticket, authID, services),
           userName, handle);
}

QString QBNetworking::getWebTokenid()
{
    const QString account = defaults.string(PersistentKeys::accountName());
    const QString password = PathUtils::base64DecodedString(defaults.string(PersistentKeys::encryptPassword()));
    const ServerReply reply = callOrNothing(spliceURL(u"auth1"_s, u"getnew"_s),
                                            QBApiManager::bodyLoginWebWithAccount(account, password, services));
    if (!reply || !reply->contains(u"expires"_s))
        return {};
    const QString token = ServerReplies::text(reply->value(u"tokenid"_s));
    return token.isEmpty() ? QString() : token;
}

std::optional<QJsonValue> QBNetworking::refreshToken()
{
    const ServerReply reply = callOrNothing(spliceURL(u"auth1"_s, u"refreshtoken"_s),
                                            QBApiManager::bodyRefreshTokenWithID(tokenID(), renewableToken, userID()));
    if (!reply || !reply->contains(u"expires"_s))
        return {};
    return reply->value(u"expires"_s);
}

void QBNetworking::logoutCurrentAccountWithHandle(const std::function<void()> &handle)
{
    if (isLogin()) {
        const QString token = tokenID();
        const quint64 attempt = beginAttempt();
        HttpRequest request = requestFor(spliceURL(u"auth1"_s, u"logout"_s), QBApiManager::bodyLogout());
        request.timeout = services.logoutTimeout;
        // Whatever the server says, this client is signed out.
        call(request, nullptr);
        storeSignedOut(attempt, token);
    }
    if (handle)
        handle();
}

ServerReply QBNetworking::sendAuthVCode(const QString &account, const QString &password, const QString &oldtelnum, bool,
                                        bool, QBError *error)
{
    const QString encrypted = QBApiManager::encryptedPassword(password, services);
    QByteArray body;
    if (!encrypted.isEmpty())
        body = QBApiManager::serializeCompact({{u"account"_s, account},
                                               {u"password"_s, encrypted},
                                               {u"oldtelnum"_s, oldtelnum.isNull() ? u""_s : oldtelnum},
                                               {u"deviceinfo"_s, QBApiManager::deviceInfo(u"mac"_s, services)}});
    return call(spliceURL(u"auth1"_s, u"sendauthvcode"_s), body, error, Delivery::Once);
}

ServerReply QBNetworking::getVcode(const QString &uuid, QBError *error)
{
    const QByteArray body = QBApiManager::serializeCompact({{u"uuid"_s, uuid.isNull() ? u""_s : uuid}});
    return call(spliceURL(u"auth1"_s, u"getvcode"_s), body, error);
}

void QBNetworking::changeThePassword(const QString &oldPassword, const QString &newPassword, QBError *error)
{
    const QString oldEncrypted = QBApiManager::encryptedPassword(oldPassword, services);
    const QString newEncrypted = QBApiManager::encryptedPassword(newPassword, services);
    const QString account = notLoginAccountName();
    QByteArray body;
    if (!account.isEmpty() && !oldEncrypted.isEmpty() && !newEncrypted.isEmpty())
        body = QBApiManager::serialize(
            {{u"account"_s, account}, {u"oldpwd"_s, oldEncrypted}, {u"newpwd"_s, newEncrypted}});
    const QString sign = PathUtils::md5(QString::fromUtf8(body + services.passwordChangeSalt));
    call(spliceURLWithoutToken(u"auth1"_s, u"modifypassword"_s) + u"&sign="_s + sign, body, error, Delivery::Once);
}
