#pragma once

#include <QMutex>
#include <QString>
#include <QVariantMap>

namespace platform
{

/// The user's settings, one property-list file. Any thread. Values change in memory at once and reach the file with
/// `synchronize`; a file that cannot be parsed counts as empty.
class UserDefaults
{
public:
    static UserDefaults &standard();

    explicit UserDefaults(const QString &path);

    /// Null when absent or of another type.
    QString string(const QString &key) const;
    /// 0 when absent; a text that holds a number counts as that number.
    qint64 integer(const QString &key) const;
    /// False when absent or neither boolean nor number.
    bool boolean(const QString &key) const;
    QVariantMap dictionary(const QString &key) const;
    bool contains(const QString &key) const;

    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);

    /// Writes what changed since the last call, owner-only and atomically. Keys that another process wrote meanwhile
    /// are kept. False when the file could not be written; the values stay in memory and the next call tries again.
    bool synchronize();

private:
    const QString path;
    QMutex writing; ///< one writer at a time; taken before `mutex`
    mutable QMutex mutex;
    QVariantMap values;
    QVariantMap changed; ///< key → new value, invalid value = removed
};

} // namespace platform
