#pragma once

#include <QString>

/// Makes files (0600) and folders (0700), missing parent folders included. Each logs its failure and returns false. An
/// empty path, "/", and a path that ends in "." or ".." are refused. Any thread; touches the disk.
namespace FileManagerCreate
{

/// A regular file at the path is replaced by an empty one; a folder there is left alone and the call fails.
bool createFileAlwaysReplace(const QString &path);
/// A folder at the path is replaced, with all it holds, by an empty one; a file there is left alone and the call fails.
bool createDirectoryAlwaysReplace(const QString &path);
/// True, and nothing touched, when a regular file is there.
bool createFileIfNotExist(const QString &path);
/// True, and nothing touched, when a folder is there.
bool createDirectoryIfNotExist(const QString &path);

} // namespace FileManagerCreate
