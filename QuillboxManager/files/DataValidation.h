#pragma once

#include <QByteArray>
#include <QString>

/// Digest and Base64 of bytes. Any thread.
namespace DataValidation
{

/// Upper-case hexadecimal MD5.
QString md5(const QByteArray &data);
/// Unknown characters are ignored; null for an empty text and for a result of no bytes.
QByteArray dataWithBase64EncodedString(const QString &base64);
/// Null for empty data. Width 0: one line. Widths 1 to 3 must not be passed.
QString base64EncodedStringWithWrapWidth(const QByteArray &data, int width);
QString base64EncodedString(const QByteArray &data);

} // namespace DataValidation
