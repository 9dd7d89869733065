#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <memory>

/// A file opened for a declared kind of access; nothing is created. One thread at a time.
class QBFileHandle
{
public:
    /// Any other number reads only.
    enum Behavior { WriteOnly = 1, Update = 2, UpdateAgain = 3 };

    static std::unique_ptr<QBFileHandle> fileHandleWithPath(const QString &path, qint64 behavior)
    {
        return initWithPath(path, behavior);
    }
    /// Null when there is no file. One that cannot be opened gives, after a log line, an object without a handle.
    static std::unique_ptr<QBFileHandle> initWithPath(const QString &path, qint64 behavior);

    QString dstPath() const { return path; }
    qint64 behavior() const { return access; }
    /// Closes with this object.
    const platform::FileDescriptor &fileHandle() const { return handle; }

    bool written = false; ///< something has been written; kept for the caller, who alone knows

private:
    QBFileHandle(const QString &path, qint64 behavior);

    const QString path;
    const qint64 access;
    platform::FileDescriptor handle;
};
