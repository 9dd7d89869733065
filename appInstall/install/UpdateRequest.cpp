#include "install/UpdateRequest.h"

#include "install/NewBundle.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <climits>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace install
{

std::optional<UpdateRequest> updateRequest(const QStringList &arguments)
{
    if (arguments.size() == 1)
        return UpdateRequest{arguments.first(), {}, {}};
    if (arguments.size() != 3)
        return std::nullopt;
    return UpdateRequest{arguments.at(0), arguments.at(1), arguments.at(2)};
}

QString problemWithPath(const QString &path)
{
    if (!path.startsWith(u'/'))
        return u"it is not absolute"_s;
    if (path == "/"_L1 || path.startsWith("/.."_L1) || path != QDir::cleanPath(path))
        return u"it is no plain path"_s;
    if (path.contains(QChar(u'\0')) || QFile::encodeName(path).size() >= PATH_MAX)
        return u"it is no usable path"_s;
    return {};
}

QString problemWithBundle(const QString &bundle)
{
    if (const QString problem = problemWithPath(bundle); !problem.isNull())
        return problem;
    struct stat information = {};
    if (::lstat(QFile::encodeName(bundle).constData(), &information) != 0 || !S_ISDIR(information.st_mode))
        return u"there is no such folder"_s;
    if (!bundle.endsWith(".app"_L1) || QFileInfo(bundle).fileName() == ".app"_L1)
        return u"it is no application"_s;
    if (information.st_uid != ::geteuid())
        return u"it belongs to somebody else"_s;
    const QString parent = QFileInfo(bundle).path();
    if (::access(QFile::encodeName(parent).constData(), W_OK | X_OK) != 0)
        return u"the folder around it cannot be changed"_s;
    return problemWithProduct(bundle);
}

QString problemWithImage(const QString &image)
{
    if (const QString problem = problemWithPath(image); !problem.isNull())
        return problem;
    struct stat information = {};
    const bool isFile =
        ::lstat(QFile::encodeName(image).constData(), &information) == 0 && S_ISREG(information.st_mode);
    return isFile ? QString() : u"it is no regular file"_s;
}

} // namespace install
