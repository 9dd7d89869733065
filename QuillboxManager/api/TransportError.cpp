#include "api/TransportError.h"

#include "platform/Localization.h"

using namespace Qt::StringLiterals;

namespace
{

struct Text {
    TransportError code;
    const char *key;
    const char *english;
};

constexpr Text texts[] = {
    {TransportError::Cancelled, "TransportCancelled", "The request was cancelled."},
    {TransportError::BadURL, "TransportBadURL", "The server address is not valid."},
    {TransportError::TimedOut, "TransportTimedOut", "The server did not answer in time."},
    {TransportError::CannotFindHost, "TransportCannotFindHost", "The server could not be found."},
    {TransportError::CannotConnect, "TransportCannotConnect", "Could not connect to the server."},
    {TransportError::ConnectionLost, "TransportConnectionLost", "The connection to the server was lost."},
    {TransportError::TooManyRedirects, "TransportTooManyRedirects", "The server redirected the request too often."},
    {TransportError::BadReply, "TransportBadReply", "The server's reply could not be understood."},
    {TransportError::BodyUnreadable, "TransportBodyUnreadable", "The document could not be read completely."},
    {TransportError::ReplyTooLarge, "TransportTooLarge", "The server's reply is too large."},
    {TransportError::SecureConnectionFailed, "TransportTLS", "A secure connection to the server could not be made."},
    {TransportError::CannotWrite, "TransportCannotWrite", "The document could not be stored."},
    {TransportError::SessionNotKept, "TransportSessionNotKept", "The sign-in could not be saved. Is the disk full?"},
};

} // namespace

QBError transportError(TransportError code, const QString &detail)
{
    QString description;
    for (const Text &text : texts) {
        if (text.code != code)
            continue;
        const QString key = QString::fromLatin1(text.key);
        description = platform::hasLocalizedString(key, u"Messages"_s) ? platform::localizedString(key, u"Messages"_s)
                                                                       : QString::fromLatin1(text.english);
    }
    return QBError::withText(QBError::transportDomain(), static_cast<qint64>(code), description, detail);
}
