#include "update/DownloadTarget.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace DownloadTarget
{

bool isFileName(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains(u'/') &&
           !name.contains(QChar::Null);
}

QString partialIn(const QString &folder)
{
    return folder + QStringLiteral("/.com.velto.quillbox.download");
}

Occupant occupantOf(const QString &path)
{
    const QFileInfo information(path);
    if (information.isSymLink())
        return Occupant::Other;
    if (!information.exists())
        return Occupant::Nobody;
    return information.isFile() ? Occupant::File : Occupant::Other;
}

bool isPlain(const QString &path)
{
    const auto isPlainCharacter = [](QChar c) {
        if (c.unicode() < 128)
            return c.isLetterOrNumber() || QStringLiteral(" ._-+,@%=:/").contains(c);
        return c.isLetterOrNumber();
    };
    return path.startsWith(u'/') && std::all_of(path.cbegin(), path.cend(), isPlainCharacter);
}

QString removalCommand(const QString &path)
{
    return QStringLiteral("rm -rf ") + QString(path).replace(u' ', QStringLiteral("\\ "));
}

void remove(const QString &path, const std::function<void(const QString &command)> &shell)
{
    const QFileInfo information(path);
    if (isPlain(path))
        shell(removalCommand(path));
    else if (information.isDir() && !information.isSymLink())
        QDir(path).removeRecursively();
    else
        QFile::remove(path);
}

} // namespace DownloadTarget
