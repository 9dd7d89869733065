#include "api/QBNetworking.h"

#include "api/ServerReplies.h"
#include "platform/Dispatch.h"
#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "state/QBGlobeInformation.h"

using namespace Qt::StringLiterals;

namespace
{

QString describe(const QBError &error)
{
    return u"Error Domain=%1 Code=%2 \"%3\""_s.arg(error.domain(), QString::number(error.code()),
                                                   error.localizedDescription());
}

QString scheme(bool https)
{
    return https ? u"https://"_s : u"http://"_s;
}

} // namespace

QBNetworking &QBNetworking::sharedNetworking()
{
    // Never destroyed: a background call may outlive the static objects of a process that quits.
    static auto *const networking = new QBNetworking(QBGlobeInformation::defaultGlobeInformation(),
                                                     HttpTransport::shared(), platform::UserDefaults::standard());
    return *networking;
}

QBNetworking::QBNetworking(QBGlobeInformation &globeStore, HttpTransport &httpTransport,
                           platform::UserDefaults &userDefaults, const ClientServices &clientServices)
    : globe(globeStore), transport(httpTransport), defaults(userDefaults), services(clientServices)
{
}

QBNetworking::~QBNetworking()
{
    std::unique_lock lock(mutex);
    backgroundCallEnded.wait(lock, [this] { return backgroundCalls == 0; });
}

QString QBNetworking::serverAddress() const
{
    return globe.server().address;
}

QString QBNetworking::serverAuthPort() const
{
    return globe.server().authPort;
}

QString QBNetworking::userID() const
{
    return globe.account().userID;
}

QString QBNetworking::tokenID() const
{
    return globe.account().tokenID;
}

bool QBNetworking::isHttpsServer() const
{
    return globe.server().useHttps.value_or(false);
}

bool QBNetworking::isLogin() const
{
    return globe.isLogin();
}

ServerReply QBNetworking::dicUpdateVersion() const
{
    const std::lock_guard lock(mutex);
    return updateVersion;
}

void QBNetworking::setDicUpdateVersion(const ServerReply &reply)
{
    const std::lock_guard lock(mutex);
    updateVersion = reply;
}

QString QBNetworking::notLoginAccountName() const
{
    const std::lock_guard lock(mutex);
    return accountNameInProgress;
}

void QBNetworking::setNotLoginAccountName(const QString &name)
{
    const std::lock_guard lock(mutex);
    accountNameInProgress = name;
}

QString QBNetworking::internalLinkPrefix() const
{
    const std::lock_guard lock(mutex);
    return linkPrefix;
}

qint64 QBNetworking::allowperm() const
{
    const std::lock_guard lock(mutex);
    return allowedPermissions;
}

bool QBNetworking::autoCasRedirect() const
{
    const std::lock_guard lock(mutex);
    return casRedirect;
}

bool QBNetworking::bRequestEntryError() const
{
    const std::lock_guard lock(mutex);
    return entryRequestFailed;
}

bool QBNetworking::isHttpServer() const
{
    const std::lock_guard lock(mutex);
    return httpOnly;
}

void QBNetworking::setServiceErrorReporter(std::function<void(const QBError &)> reporter)
{
    const std::lock_guard lock(mutex);
    serviceErrorReporter = std::move(reporter);
}

QString QBNetworking::spliceURLWithServer(const QString &server, const QString &port, const QString &path) const
{
    return scheme(isHttpsServer()) + server + u":"_s + port + u"/api/v1/"_s + path;
}

QString QBNetworking::spliceURLWithPort(const QString &port, const QString &path) const
{
    return spliceURLWithServer(serverAddress(), port, path);
}

QString QBNetworking::spliceURLWithoutMethod(const QString &api) const
{
    return spliceURLWithPort(serverAuthPort(), api);
}

QString QBNetworking::spliceURLWithoutToken(const QString &api, const QString &method) const
{
    return spliceURLWithoutMethod(api) + u"?method="_s + method;
}

QString QBNetworking::spliceURL(const QString &api, const QString &method) const
{
    return spliceURLWithoutToken(api, method) + u"&tokenid="_s + tokenID();
}

QByteArray QBNetworking::postWithURL(const QString &url, const QByteArray &body, QBError *error)
{
    return send(url, body, ReplyShape::Object, Delivery::Usual, error);
}

QByteArray QBNetworking::postWithURL1(const QString &url, const QByteArray &body, QBError *error)
{
    return send(url, body, ReplyShape::Array, Delivery::Usual, error);
}

QByteArray QBNetworking::send(const QString &url, const QByteArray &body, ReplyShape shape, Delivery delivery,
                              QBError *error)
{
    HttpRequest request;
    request.url = url;
    request.body = body;
    request.timeout = services.callTimeout;
    request.headers = {{"Content-Type", "application/x-www-form-urlencoded charset=utf-8"}};
    request.freshConnection = delivery == Delivery::Once;
    const HttpReply reply = transport.post(request);
    const auto variant = shape == ReplyShape::Array ? ServerReplies::Variant::Array : ServerReplies::Variant::Object;
    const QBError problem = reply.error ? reply.error : ServerReplies::problem(reply.body, reply.status, variant);
    if (problem) {
        platform::log(u"error:%1-->url:%2"_s.arg(describe(problem), platform::redactedURL(url)));
        if (error)
            *error = problem;
    }
    return reply.error ? QByteArray() : reply.body;
}

ServerReply QBNetworking::call(const QString &url, const QByteArray &body, QBError *error, Delivery delivery)
{
    QBError problem;
    const QByteArray data = send(url, body, ReplyShape::Object, delivery, &problem);
    const ServerReply reply = ServerReplies::object(data);
    if (!problem && !reply && !data.trimmed().isEmpty())
        problem = transportError(TransportError::BadReply);
    if (problem && error)
        *error = problem;
    return reply;
}

ServerReply QBNetworking::callOrNothing(const QString &url, const QByteArray &body)
{
    QBError error;
    const ServerReply reply = call(url, body, &error);
    return error ? std::nullopt : reply;
}

void QBNetworking::runInBackground(std::function<void()> work)
{
    {
        const std::lock_guard lock(mutex);
        ++backgroundCalls;
    }
    // The end is told by the job's destruction: the pool may drop a job without running it.
    const std::shared_ptr<void> running(nullptr, [this](void *) {
        const std::lock_guard lock(mutex);
        --backgroundCalls;
        backgroundCallEnded.notify_all();
    });
    platform::dispatchGlobal([running, work = std::move(work)] { work(); });
}
