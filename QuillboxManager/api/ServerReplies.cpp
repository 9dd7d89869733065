#include "api/ServerReplies.h"

#include "api/TransportError.h"
#include "platform/Localization.h"
#include "state/Common.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ServerReplies
{

namespace
{

constexpr qsizetype longestText = 1000; ///< of what a server says in an error: it is shown and searched

bool isOneOf(qint64 code, std::initializer_list<qint64> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

QString lockOwner(const QString &cause, Variant variant)
{
    const QString owner = Common::catchValue(cause, u"locked by\\s*(.*)\\("_s);
    if (!owner.isNull())
        return owner;
    return Common::catchValue(cause,
                              variant == Variant::Object ? u"locked by\\s*(.*)（"_s : u"locked by\\s*(.*?)\\s*（"_s);
}

/// The server's own text, else the client's text for the code: never empty.
QString description(const QJsonObject &reply, qint64 code)
{
    const QString own = text(reply.value(u"errmsg"_s)).left(longestText);
    if (!own.isEmpty())
        return own;
    const QString known = QBError::messageForCode(code);
    if (!known.isNull())
        return known;
    const QString key = u"ServerErrorWithoutText"_s;
    const QString format = platform::hasLocalizedString(key, u"Messages"_s)
                               ? platform::localizedString(key, u"Messages"_s)
                               : u"The server reported error %@."_s;
    return platform::fillPlaceholders(format, {QString::number(code)});
}

QJsonObject carrierOfError(const QJsonDocument &document, Variant variant)
{
    if (variant == Variant::Array && document.isArray())
        return document.array().first().toObject();
    return document.object();
}

} // namespace

std::optional<QJsonObject> object(const QByteArray &data)
{
    const QJsonDocument document = QJsonDocument::fromJson(data);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

QBError problem(const QByteArray &data, int status, Variant variant)
{
    return problem(data, QJsonDocument::fromJson(data), status, variant);
}

QBError problem(const QByteArray &data, const QJsonDocument &document, int status, Variant variant)
{
    const QString httpStatus = status >= 400 ? u"HTTP %1"_s.arg(status) : QString();
    if (QByteArrayView(data).trimmed().isEmpty())
        return status >= 400 ? transportError(TransportError::BadReply, httpStatus) : QBError();
    if (document.isNull())
        return transportError(TransportError::BadReply, httpStatus);
    const QJsonObject reply = carrierOfError(document, variant);
    return reply.contains(u"errcode"_s) ? serverError(reply, variant) : QBError();
}

QBError serverError(const QJsonObject &reply, Variant variant)
{
    const qint64 code = text(reply.value(u"errcode"_s)).toLongLong();
    QVariantMap userInfo{{QBErrorKeys::needModifyPassword(), isOneOf(code, {401012, 401013, 401017})},
                         {QBErrorKeys::localizedDescription(), description(reply, code)}};
    const QString lockTime = text(reply.value(u"detail"_s).toObject().value(u"remainlockTime"_s));
    if (code == 401020 && !lockTime.isNull())
        userInfo.insert(QBErrorKeys::lockTime(), lockTime);
    const QString owner = lockOwner(reply.value(u"causemsg"_s).toString().left(longestText), variant);
    if (isOneOf(code, {403031, 403175, 403176}) && !owner.isNull())
        userInfo.insert(QBErrorKeys::lockUser(), owner);
    return QBError(QBError::serverDomain(), code, userInfo);
}

QString text(const QJsonValue &value)
{
    if (value.isDouble())
        return value.toVariant().toString();
    return value.isString() ? value.toString() : QString();
}

bool truth(const QJsonValue &value)
{
    if (value.isString()) {
        const QString lower = value.toString().trimmed().toLower();
        return lower.startsWith(u't') || lower.startsWith(u'y') || lower.toLongLong() != 0;
    }
    return value.toBool() || value.toDouble() != 0;
}

} // namespace ServerReplies
