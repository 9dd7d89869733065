#pragma once

#include "api/QBError.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <chrono>
#include <memory>

/// Codes of errors in QBError::transportDomain().
enum class TransportError {
    Cancelled = -999,
    BadURL = -1000,
    TimedOut = -1001,
    CannotFindHost = -1003,
    CannotConnect = -1004,
    ConnectionLost = -1005,
    TooManyRedirects = -1007,
    BadReply = -1011,
    SecureConnectionFailed = -1200,
    ReplyTooLarge = -1103,
};

struct HttpRequest {
    QString url;                                 ///< http or https, absolute
    QByteArray body;                             ///< of the POST; null and empty both send no bytes
    QList<QPair<QByteArray, QByteArray>> headers;
    std::chrono::milliseconds timeout{60'000};   ///< of the whole exchange
    bool acceptAnyCertificate = true;
    bool freshConnection = false;                ///< no kept-alive connection, so never sent twice by itself
    qint64 replyLimit = 64 * 1024 * 1024;        ///< bytes; a longer reply is an error
};

struct HttpReply {
    QBError error;      ///< of the transport; the rest means nothing then
    int status = 0;     ///< an HTTP error status is a reply, not an error
    QByteArray body;    ///< empty, never null, when there was none
    QString finalUrl;   ///< after redirects
    QByteArray contentType;
};

/// Blocking HTTP POSTs over pooled, kept-alive connections that share cookies. Any thread, many at a time. Proxy settings
/// are the desktop's. Idle connections are dropped after a minute.
class HttpTransport
{
public:
    static HttpTransport &shared();

    HttpTransport();
    ~HttpTransport();
    HttpTransport(const HttpTransport &) = delete;
    HttpTransport &operator=(const HttpTransport &) = delete;

    /// Never throws, never blocks longer than the request's time-out.
    HttpReply post(const HttpRequest &request);

    /// Forgets every cookie.
    void deleteCookies();

    /// Aborts every exchange in progress and refuses later ones with Cancelled: the process is quitting. Any thread.
    void shutDown();

private:
    class Private;
    const std::unique_ptr<Private> d;
};
