#pragma once

#include <QByteArray>
#include <QString>

namespace platform
{

enum class FileAccess { OwnerOnly, Shared };

/// Writes to a temporary file beside `path`, flushes it to the disk and renames it: a kill or a full disk leaves the
/// old file or the new one. A link at `path` is followed, so that its target is replaced. False on any failure, with
/// the old file untouched and no temporary file left. Any thread.
bool writeAtomically(const QString &path, const QByteArray &bytes, FileAccess access = FileAccess::OwnerOnly);

} // namespace platform
