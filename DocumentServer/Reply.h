#pragma once

#include "ApiError.h"
#include "ReplyStream.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <utility>

namespace documentserver
{

/// What goes back over the wire.
struct Reply {
    int status = 200;
    QByteArray body;
    QByteArray type = QByteArrayLiteral("application/json; charset=utf-8");
    QList<std::pair<QByteArray, QByteArray>> headers;
    std::shared_ptr<const ReplyStream> stream; ///< sent instead of the body where there is one
    qint64 cutAfter = -1;   ///< the connection ends after so many bytes of the body, if it has them; -1: not
    bool neverEnds = false; ///< the body is followed by more and more blanks until the client hangs up
};

Reply replyWith(const QJsonObject &object, int status = 200);
/// The reply that tells an error; as the only element of an array for calls that answer with arrays.
Reply replyFor(const ApiError &error, bool inArray = false);

/// Where a request goes and what its body is.
struct RequestHead {
    QString path;     ///< without query, as it came
    QByteArray query; ///< without "?", as it came
    QByteArray contentType;
    QByteArray languages; ///< as in the header Accept-Language
    QString origin;       ///< how the client calls this server, as "http://127.0.0.1:8080"
    QByteArray page;      ///< origin of the page that sends the request, as in the header Origin
};

/// Takes the body of one request piece by piece, then answers. One thread. Destroyed unfinished when the connection
/// breaks: nothing of the request may remain then.
class BodyReceiver
{
public:
    BodyReceiver() = default;
    virtual ~BodyReceiver() = default;
    BodyReceiver(const BodyReceiver &) = delete;
    BodyReceiver &operator=(const BodyReceiver &) = delete;

    virtual void take(const char *data, qsizetype length) = 0;
    /// Only after the whole body was taken, or so much of it that the rest is of no use.
    virtual Reply finish() = 0;
    /// False: whatever else comes is thrown away.
    virtual bool wantsMore() const = 0;

    qint64 cutAfter = -1; ///< the connection ends after so many bytes of the body have come; -1: it does not
};

} // namespace documentserver
