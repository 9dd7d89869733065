#pragma once

#include <QString>

#include <functional>

/// Names that a server gave, on their way to the disk. Any thread.
namespace DownloadTarget
{

/// A name for a file in a folder: not empty, ".", "..", no slash, no zero character.
bool isFileName(const QString &name);

/// The hidden file that an image grows in before it gets its name. A client that was ended meanwhile leaves it behind.
QString partialIn(const QString &folder);

enum class Occupant { Nobody, File, Other };
/// What is at the path; links are not followed and count as Other.
Occupant occupantOf(const QString &path);

/// Nothing in the path means anything to a shell but blanks.
bool isPlain(const QString &path);
/// "rm -rf " with every blank of the path escaped. For plain paths.
QString removalCommand(const QString &path);

/// Removes a file or folder with all it holds: plain paths through `shell`, which gets the command, others through the
/// file interface. Links are removed, never followed.
void remove(const QString &path, const std::function<void(const QString &command)> &shell);

} // namespace DownloadTarget
