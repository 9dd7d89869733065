#pragma once

#include "api/QBError.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

/// Readers of what the server sent; anything may be missing or of the wrong type. Any thread.
namespace ServerReplies
{

/// Full-width patterns of the lock owner: the array variant of the calls has one of its own.
enum class Variant { Object, Array };

/// Nothing when the bytes are no JSON object.
std::optional<QJsonObject> object(const QByteArray &data);

/// What a reply says went wrong: its "errcode" (an array's in the first element), or that it is no JSON, or an HTTP
/// error status with nothing to read. No error for any other reply.
QBError problem(const QByteArray &data, int status, Variant variant);
/// The same for data that is parsed already.
QBError problem(const QByteArray &data, const QJsonDocument &document, int status, Variant variant);

/// The error of domain "com.velto" that `reply`, which has an "errcode", describes.
QBError serverError(const QJsonObject &reply, Variant variant);

/// Text, or the digits of a number; null for anything else.
QString text(const QJsonValue &value);
/// True, a number other than 0, or a text that begins like one of these.
bool truth(const QJsonValue &value);

} // namespace ServerReplies
