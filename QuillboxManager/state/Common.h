#pragma once

#include <QByteArray>
#include <QString>

/// Small shared operations of the API client and the companions. Any thread.
class Common
{
public:
    /// First capture group of the first match, null when nothing matches.
    static QString catchValue(const QString &text, const QString &regex);
    /// Multipart body of `metaData` (JSON) and `data` between boundaries; the parts carry no headers.
    static QByteArray getDataWithBoundary(const QString &boundary, const QByteArray &data, const QByteArray &metaData);
    /// True when both paths stand in the same folder.
    static bool isParentPathSame(const QString &first, const QString &second);
    /// Root of the cloud volume.
    static QString getRootPath();
    /// A node that may not be deleted: the volume's root and its top-level folders.
    static bool isUndeleteNode(const QString &path);
};
