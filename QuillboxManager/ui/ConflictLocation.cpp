#include "ui/ConflictLocation.h"

#include <QStringList>

QString conflictLocation(const QString &path, const QString &volumesFolder)
{
    // Counted below as on a host whose volumes stand in one folder of the root.
    QString local = path;
    if (!volumesFolder.isEmpty() && path.startsWith(volumesFolder + QLatin1Char('/')))
        local = QLatin1String("/Volumes") + path.mid(volumesFolder.size());

    QStringList components = local.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (local.startsWith(QLatin1Char('/')))
        components.prepend(QStringLiteral("/"));
    const QStringList folders = components.mid(2, qMax<qsizetype>(0, components.size() - 3));
    return QLatin1String("Quillbox://") + folders.join(QLatin1Char('/'));
}
