#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace platform
{

/// Whole content of the regular file (links are followed). Nothing when it cannot be read, is no regular file (a pipe
/// never blocks the caller) or holds more than `maximumBytes`. Any thread.
std::optional<QByteArray> readBoundedFile(const QString &path, qsizetype maximumBytes);

} // namespace platform
