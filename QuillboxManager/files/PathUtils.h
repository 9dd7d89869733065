#pragma once

#include <QByteArray>
#include <QString>

/// Queries on a path, and digest and Base64 of a text. Any thread; the queries stat the disk.
namespace PathUtils
{

bool exist(const QString &path);
bool existFile(const QString &path);
bool existDirectory(const QString &path);
/// The item exists and is hidden (its name begins with a dot where the host has no hidden flag).
bool hidden(const QString &path);
/// Size in bytes; all bits set when nothing is there.
quint64 size(const QString &path);
/// The path has fewer than four components: the cloud volume's root or above, which the user may not change.
bool constant(const QString &path);
/// `path` joined with `component` by one slash; null when `path` is null.
QString appending(const QString &path, const QString &component);

/// Upper-case hexadecimal MD5 of the UTF-8 bytes up to the first zero byte.
QString md5(const QString &text);
/// Base64 text → UTF-8 text; null when decoding yields nothing.
QString stringWithBase64EncodedString(const QString &base64);
QString base64DecodedString(const QString &base64);
/// Null when decoding yields nothing.
QByteArray base64DecodedData(const QString &base64);
/// As in DataValidation, of the text's UTF-8 bytes.
QString base64EncodedString(const QString &text);
QString base64EncodedStringWithWrapWidth(const QString &text, int width);

} // namespace PathUtils
