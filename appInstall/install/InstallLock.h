#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <chrono>

namespace install
{

/// Held by the one process of this user that changes the installation; the system gives it back however the process
/// ends.
class InstallLock
{
public:
    /// Tries for that long; zero: once. `folder` is made when it is missing.
    InstallLock(const QString &folder, std::chrono::milliseconds patience);
    bool isHeld() const { return file.isOpen(); }

private:
    platform::FileDescriptor file;
};

} // namespace install
