#include "PrivateFile.h"

#include <QFile>
#include <QSaveFile>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace documentserver
{

bool writePrivateFile(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    const bool done = file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                      file.write(bytes) == bytes.size() && file.commit();
    if (!done && error)
        *error = u"cannot write %1: %2"_s.arg(path, file.errorString());
    return done;
}

std::optional<QByteArray> readFile(const QString &path, qint64 limit, QString *error)
{
    QFile file(path);
    QString problem;
    if (!file.open(QIODevice::ReadOnly)) {
        problem = file.errorString();
    } else {
        const QByteArray bytes = file.read(limit + 1);
        if (file.error() == QFile::NoError && bytes.size() <= limit)
            return bytes;
        problem = bytes.size() > limit ? u"larger than %1 bytes"_s.arg(limit) : file.errorString();
    }
    if (error)
        *error = u"cannot read %1: %2"_s.arg(path, problem);
    return std::nullopt;
}

QByteArray fileState(const QString &path)
{
    struct stat status {
    };
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
#ifdef __APPLE__
    const timespec changed = status.st_mtimespec;
#else
    const timespec changed = status.st_mtim;
#endif
    return QByteArray::number(qint64(changed.tv_sec)) + '.' + QByteArray::number(qint64(changed.tv_nsec)) + '/' +
           QByteArray::number(qint64(status.st_size)) + '/' + QByteArray::number(quint64(status.st_ino));
}

} // namespace documentserver
