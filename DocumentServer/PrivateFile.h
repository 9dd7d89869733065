#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace documentserver
{

/// Writes a file that only its owner may read: whole or not at all, also when the process is killed meanwhile.
bool writePrivateFile(const QString &path, const QByteArray &bytes, QString *error);
/// Reads a file of at most `limit` bytes; nothing and a text in *error when it cannot be read or is larger.
std::optional<QByteArray> readFile(const QString &path, qint64 limit, QString *error);

/// What tells one state of a file from the next without reading it; empty when there is no file.
QByteArray fileState(const QString &path);

} // namespace documentserver
