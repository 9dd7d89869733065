#include "volume/MountPoint.h"

#include "platform/BoundedFile.h"
#include "platform/Task.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <cstdlib>

#include <sys/mount.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace volume
{
namespace
{

/// Blanks and the like stand as three octal digits in the table.
QByteArray unescaped(const QByteArray &field)
{
    QByteArray plain;
    for (qsizetype at = 0; at < field.size(); ++at) {
        bool octal = false;
        const int code = field[at] == '\\' ? field.mid(at + 1, 3).toInt(&octal, 8) : 0;
        plain.append(octal ? static_cast<char>(code) : field[at]);
        at += octal ? 3 : 0;
    }
    return plain;
}

bool isOurs(const QList<QByteArray> &fields, unsigned user)
{
    const qsizetype dash = fields.indexOf("-");
    if (dash < 0 || fields.size() < dash + 4 || fields[dash + 1] != "fuse.quillbox")
        return false;
    return fields[dash + 3].split(',').contains("user_id=" + QByteArray::number(user));
}

} // namespace

MountOwner ownerOfMount(const QByteArray &table, const QString &path, unsigned user)
{
    const QByteArray wanted = QFile::encodeName(QDir::cleanPath(path));
    MountOwner owner = MountOwner::Nobody;
    for (const QByteArray &line : table.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() > 4 && unescaped(fields[4]) == wanted)
            owner = isOurs(fields, user) ? MountOwner::OurKind : MountOwner::Foreign;
    }
    return owner;
}

MountOwner MountPoint::owner() const
{
    constexpr qsizetype largestTable = 16 * 1024 * 1024;
    const auto table = platform::readBoundedFile(u"/proc/self/mountinfo"_s, largestTable);
    return ownerOfMount(table.value_or(QByteArray()), path, ::geteuid());
}

/// A service that crashed may have a helper that is about to detach its volume; it must not meet the new one.
bool MountPoint::goesByItself() const
{
    for (int attempt = 0; attempt < 20 && owner() == MountOwner::OurKind; ++attempt)
        QThread::msleep(25);
    return owner() == MountOwner::Nobody;
}

QString MountPoint::prepare() const
{
    if (owner() == MountOwner::OurKind && !goesByItself() && !detach())
        return u"the dead volume at %1 cannot be detached"_s.arg(path);
    if (owner() != MountOwner::Nobody)
        return u"something else is mounted at %1"_s.arg(path);
    if (!QDir().mkpath(path))
        return u"%1 cannot be made"_s.arg(path);
    return {};
}

bool MountPoint::detach() const
{
    // Several volumes may lie on top of each other; more than a few are nobody's accident.
    for (int attempt = 0; attempt < 8 && owner() == MountOwner::OurKind; ++attempt) {
        const QByteArray place = QFile::encodeName(path);
        if (::umount2(place.constData(), MNT_DETACH | UMOUNT_NOFOLLOW) != 0)
            platform::runTask(u"fusermount3"_s, {u"-u"_s, u"-z"_s, u"-q"_s, path}, std::chrono::seconds(5));
    }
    return owner() != MountOwner::OurKind;
}

} // namespace volume
