#pragma once

#include <QString>

namespace install
{

/// Two folders of one file system take each other's place in one step; nobody ever sees one missing. False with
/// nothing changed where that fails or the file system cannot do it. Any thread.
bool exchangePaths(const QString &one, const QString &other);

/// The folder's entries are on the disk when this returns true.
bool flushFolder(const QString &folder);

/// Everything written to the file system of this folder is on the disk when this returns true.
bool flushFileSystem(const QString &folder);

} // namespace install
