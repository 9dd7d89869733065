#pragma once

#include "platform/Host.h"

namespace platform
{

/// The kernel's file systems in user space together with the program that mounts them for ordinary users.
class LinuxFileSystemDriver final : public FileSystemDriver
{
public:
    QString installedVersion() const override;
};

} // namespace platform
