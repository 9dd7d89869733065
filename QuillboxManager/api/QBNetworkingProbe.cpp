#include "api/QBNetworking.h"

#include "platform/Dispatch.h"
#include "platform/Log.h"
#include "state/QBGlobeInformation.h"

#include <QCoreApplication>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype longestLoggedReply = 4096;

/// A reply as it may stand in a log.
QString loggable(const QByteArray &reply)
{
    static const QRegularExpression secret(u"(\"(?:tokenid|password|ticket)\"\\s*:\\s*\")(?:[^\"\\\\]++|\\\\.)*+"_s);
    return QString::fromUtf8(reply).replace(secret, u"\\1…"_s).left(longestLoggedReply);
}

} // namespace

HttpReply QBNetworking::ping(const QString &url, std::chrono::milliseconds timeout)
{
    HttpRequest request;
    request.url = url;
    request.timeout = timeout;
    return transport.post(request);
}

bool QBNetworking::reachability()
{
    const QString url = spliceURLWithoutMethod(u"ping"_s);
    const HttpReply first = ping(url, services.reachabilityTimeout);
    if (first.error || first.finalUrl != url)
        return false;
    return !ping(url, services.reachabilityTimeout).error;
}

bool QBNetworking::pingStoredServer(bool apiFamily)
{
    const QString url = (isHttpsServer() ? u"https://"_s : u"http://"_s) + serverAddress() + u":"_s + serverAuthPort() +
                        (apiFamily ? u"/api/v1/ping"_s : u"/v1/ping"_s);
    return !ping(url, services.probeTimeout).error;
}

void QBNetworking::serverConfigWithServer(const QString &server, const QString &authPort, const QString &,
                                          std::function<void(ServerConfigResult)> handle)
{
    const quint64 attempt = beginAttempt();
    globe.clearToken();
    runInBackground([this, server, authPort, attempt, handle = std::move(handle)] {
        globe.update(); // signed out whatever the probes find
        const bool found =
            probe(server, authPort, true, attempt) || (isLatest(attempt) && probe(server, authPort, false, attempt));
        if (handle)
            handle(found ? ServerConfigResult::Succeeded : ServerConfigResult::Failed);
    });
}

/// True when the server answered and is now the stored one.
bool QBNetworking::probe(const QString &server, const QString &authPort, bool https, quint64 attempt)
{
    const QString url = (https ? u"https://"_s : u"http://"_s) + server + u":"_s + authPort + u"/api/v1/ping"_s;
    const HttpReply reply = ping(url, services.probeTimeout);
    // Some servers say 400 to whoever speaks TLS to a port that is not meant for it.
    if (reply.error || (https && reply.status == 400))
        return false;
    {
        const std::lock_guard lock(mutex);
        if (attempt != latestAttempt)
            return false;
        httpOnly = !https;
        globe.setServer({server, authPort, https});
    }
    globe.update(); // outside the lock, which the main thread takes too
    return true;
}

void QBNetworking::testURLSessionURL(const QString &url, const QByteArray &body, QBError *)
{
    runInBackground([this, url, body] {
        HttpRequest request;
        request.url = url;
        request.body = body;
        request.timeout = services.callTimeout;
        request.headers = {{"Content-Type", "application/x-www-form-urlencoded charset=utf-8"}};
        const HttpReply reply = transport.post(request);
        const QString text = reply.error ? reply.error.localizedDescription() : loggable(reply.body);
        platform::dispatchMain(QCoreApplication::instance(), [text] { platform::log(text); });
    });
}
