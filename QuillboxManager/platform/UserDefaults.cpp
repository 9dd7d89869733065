#include "platform/UserDefaults.h"

#include "platform/FileDescriptor.h"
#include "platform/Host.h"
#include "platform/HostProcess.h"
#include "platform/PropertyList.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <utility>

namespace platform
{

namespace
{

void makeFolder(const QString &folder)
{
    const QFileInfo information(folder);
    if (information.exists() || folder.isEmpty())
        return;
    makeFolder(information.path());
    ::mkdir(QFile::encodeName(folder).constData(), 0700);
}

/// Held while the file is read, merged and written, so that two processes do not lose each other's keys. Another
/// process that hangs while it holds the lock delays this one for a second at most.
FileDescriptor lockFolder(const QString &folder)
{
    FileDescriptor opened(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    constexpr int attempts = 500;
    constexpr timespec pause = {0, 2'000'000};
    for (int attempt = 0; opened.isOpen() && attempt < attempts; ++attempt) {
        if (::flock(opened.get(), LOCK_EX | LOCK_NB) == 0)
            break;
        ::nanosleep(&pause, nullptr);
    }
    return opened;
}

void apply(const QVariantMap &changes, QVariantMap &values)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (change.value().isValid())
            values.insert(change.key(), change.value());
        else
            values.remove(change.key());
    }
}

/// The file's values with the changes, once they are on the disk. A file that is gone or damaged is made again from
/// what is `known`.
std::optional<QVariantMap> mergeIntoFile(const QString &path, const QVariantMap &changes, const QVariantMap &known)
{
    const QString folder = QFileInfo(path).path();
    makeFolder(folder);
    const FileDescriptor lock = lockFolder(folder);
    const auto onDisk = PropertyList::readDictionary(path);
    QVariantMap merged = onDisk.value_or(known);
    apply(changes, merged);
    if (merged != onDisk && !PropertyList::write(path, merged))
        return std::nullopt;
    return merged;
}

bool isNumber(int type)
{
    return type == QMetaType::Int || type == QMetaType::UInt || type == QMetaType::LongLong ||
           type == QMetaType::ULongLong || type == QMetaType::Double || type == QMetaType::Bool;
}

} // namespace

UserDefaults &UserDefaults::standard()
{
    static UserDefaults defaults(hostFolders().userDefaultsFile());
    return defaults;
}

UserDefaults::UserDefaults(const QString &file)
    : path(file), values(PropertyList::readDictionary(file).value_or(QVariantMap()))
{
}

QString UserDefaults::string(const QString &key) const
{
    QMutexLocker lock(&mutex);
    const QVariant value = values.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

qint64 UserDefaults::integer(const QString &key) const
{
    QMutexLocker lock(&mutex);
    const QVariant value = values.value(key);
    if (isNumber(value.typeId()))
        return value.toLongLong();
    return value.typeId() == QMetaType::QString ? value.toString().trimmed().toLongLong() : 0;
}

bool UserDefaults::boolean(const QString &key) const
{
    QMutexLocker lock(&mutex);
    const QVariant value = values.value(key);
    return isNumber(value.typeId()) && value.toDouble() != 0.0;
}

QVariantMap UserDefaults::dictionary(const QString &key) const
{
    QMutexLocker lock(&mutex);
    const QVariant value = values.value(key);
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

bool UserDefaults::contains(const QString &key) const
{
    QMutexLocker lock(&mutex);
    return values.contains(key);
}

void UserDefaults::set(const QString &key, const QVariant &value)
{
    if (!value.isValid()) {
        remove(key);
        return;
    }
    QMutexLocker lock(&mutex);
    values.insert(key, value);
    changed.insert(key, value);
}

void UserDefaults::remove(const QString &key)
{
    QMutexLocker lock(&mutex);
    values.remove(key);
    changed.insert(key, QVariant());
}

bool UserDefaults::synchronize()
{
    QMutexLocker writer(&writing);
    QVariantMap pending;
    QVariantMap known;
    {
        QMutexLocker lock(&mutex);
        if (changed.isEmpty())
            return true;
        pending = std::exchange(changed, {});
        known = values;
    }
    // Readers are not held up while the file is written.
    const auto merged = mergeIntoFile(path, pending, known);
    QMutexLocker lock(&mutex);
    if (merged)
        values = *merged;
    else
        pending.insert(changed); // what was set meanwhile is newer
    apply(changed, values);
    if (!merged)
        changed = pending;
    return merged.has_value();
}

} // namespace platform
