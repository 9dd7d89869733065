#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace testing
{

/// Writes a file, with the folders that lead to it; false when it did not get there whole.
inline bool writeFile(const QString &path, const QByteArray &content, mode_t mode = 0644)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
    return written && ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

/// Null when there is no such file.
inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The permission bits; 0 when there is nothing.
inline mode_t modeOf(const QString &path)
{
    struct stat information = {};
    return ::stat(QFile::encodeName(path).constData(), &information) == 0 ? information.st_mode & 07777 : 0;
}

/// The file of an XML property list with this content.
inline QByteArray propertyList(const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + content + "</plist>";
}

} // namespace testing
