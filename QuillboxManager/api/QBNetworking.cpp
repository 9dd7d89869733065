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

/// Shared by all requests; never destroyed, like the client itself.
const QList<QPair<QByteArray, QByteArray>> &bodyHeaders()
{
    static const auto &headers =
        *new QList<QPair<QByteArray, QByteArray>>{{"Content-Type", "application/x-www-form-urlencoded charset=utf-8"}};
    return headers;
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

bool QBNetworking::autoCasRedirect() const
{
    const std::lock_guard lock(mutex);
    return casRedirect;
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

HttpRequest QBNetworking::requestFor(const QString &url, const QByteArray &body) const
{
    HttpRequest request;
    request.url = url;
    request.body = body;
    request.timeout = services.callTimeout;
    request.headers = bodyHeaders();
    return request;
}

ServerReply ServerAnswer::object() const
{
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

ServerAnswer QBNetworking::exchange(const HttpRequest &request, ReplyShape shape)
{
    ServerAnswer answer;
    answer.reply = transport.post(request);
    answer.error = answer.reply.error;
    if (!answer.error) {
        const auto variant =
            shape == ReplyShape::Array ? ServerReplies::Variant::Array : ServerReplies::Variant::Object;
        answer.document = QJsonDocument::fromJson(answer.reply.body);
        answer.error = ServerReplies::problem(answer.reply.body, answer.document, answer.reply.status, variant);
    }
    if (answer.error)
        platform::log(u"error:%1-->url:%2"_s.arg(describe(answer.error), platform::redactedURL(request.url)));
    return answer;
}

QByteArray QBNetworking::postWithURL(const QString &url, const QByteArray &body, QBError *error)
{
    return send(url, body, ReplyShape::Object, error);
}

QByteArray QBNetworking::postWithURL1(const QString &url, const QByteArray &body, QBError *error)
{
    return send(url, body, ReplyShape::Array, error);
}

QByteArray QBNetworking::send(const QString &url, const QByteArray &body, ReplyShape shape, QBError *error)
{
    const ServerAnswer answer = exchange(requestFor(url, body), shape);
    if (answer.error && error)
        *error = answer.error;
    return answer.reply.error ? QByteArray() : answer.reply.body;
}

ServerAnswer QBNetworking::transfer(HttpRequest request)
{
    request.stallTimeout = services.callTimeout;
    return exchange(request, ReplyShape::Object);
}

ServerReply QBNetworking::call(const QString &url, const QByteArray &body, QBError *error, Delivery delivery)
{
    HttpRequest request = requestFor(url, body);
    request.freshConnection = delivery == Delivery::Once;
    return call(request, error);
}

ServerReply QBNetworking::call(const HttpRequest &request, QBError *error)
{
    ServerAnswer answer = exchange(request, ReplyShape::Object);
    const ServerReply reply = answer.object();
    if (!answer.error && !reply && !QByteArrayView(answer.reply.body).trimmed().isEmpty())
        answer.error = transportError(TransportError::BadReply);
    if (answer.error && error)
        *error = answer.error;
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
