#pragma once

#include "api/ByteSink.h"
#include "api/ByteSource.h"
#include "api/StopSignal.h"
#include "api/TransportError.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <chrono>
#include <memory>

/// Takes a reply's body as it arrives.
class ReplySink : public ByteSink
{
public:
    /// Asked once, before the first byte; what is refused becomes HttpReply::body, as without a sink. Not asked when
    /// the reply has no body.
    virtual bool takes(int status, const QByteArray &contentType) = 0;
    /// Told right before `takes`: bytes of the body as the server announced them, -1 when it did not.
    virtual void announceLength(qint64) {}
    /// Why the latest write was refused.
    virtual TransportError refusal() const { return TransportError::CannotWrite; }
};

/// What it points to outlives the exchange.
struct HttpRequest {
    QString url;                  ///< http or https, absolute
    QByteArray method = "POST";   ///< letters; any other than POST sends neither `body` nor `upload`
    QByteArray body;              ///< of the POST; null and empty both send no bytes
    ByteSource *upload = nullptr; ///< the POST's bytes instead of `body`; read anew after a redirect
    ReplySink *sink = nullptr;
    StopSignal *stop = nullptr;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArrayList wantedHeaders;              ///< names of those to be found in HttpReply::headers
    std::chrono::milliseconds timeout{60'000}; ///< of the whole exchange
    /// When set, it replaces `timeout`: the exchange ends when less than a kilobyte moved, either way, for so long.
    std::chrono::milliseconds stallTimeout{0};
    bool acceptAnyCertificate = true;
    bool freshConnection = false;         ///< no kept-alive connection, so never sent twice by itself
    qint64 replyLimit = 64 * 1024 * 1024; ///< bytes outside a sink; a longer reply is an error
};

struct HttpReply {
    QBError error;    ///< of the transport; the rest means nothing then
    int status = 0;   ///< an HTTP error status is a reply, not an error
    QByteArray body;  ///< empty, never null, when there was none
    QString finalUrl; ///< after redirects
    QByteArray contentType;
    QHash<QByteArray, QByteArray> headers; ///< the wanted ones that came, by the name they were wanted with
};

/// Blocking HTTP exchanges over pooled, kept-alive connections that share cookies. Any thread, many at a time. Proxy
/// settings are the desktop's. Idle connections are dropped after a minute.
///
/// Redirects are followed, at most ten, and keep method and body. One that leads from HTTPS to plain HTTP is
/// refused with SecureConnectionFailed: a body may hold credentials. Where any certificate is accepted, so are the old
/// protocol versions and ciphers that such servers speak. A kept-alive connection that turns out dead before a byte of
/// answer came is replaced and the request sent again, once.
class HttpTransport
{
public:
    static HttpTransport &shared();

    explicit HttpTransport(std::chrono::milliseconds idleLife = std::chrono::minutes(1));
    /// Aborts what is in progress and waits for those calls to return, which takes milliseconds.
    ~HttpTransport();
    HttpTransport(const HttpTransport &) = delete;
    HttpTransport &operator=(const HttpTransport &) = delete;

    /// Never blocks longer than the request's time-out, and returns at once when its stop signal or shutDown says so.
    HttpReply send(const HttpRequest &request);
    HttpReply post(const HttpRequest &request) { return send(request); }

    /// Forgets every cookie.
    void deleteCookies();

    /// Aborts every exchange in progress and refuses later ones with Cancelled: the process is quitting. Any thread.
    void shutDown();

    /// Connections kept open that no call uses at the moment, counted as the handles that hold them.
    int idleHandles() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
