#pragma once

#include "platform/Host.h"

namespace platform
{

/// Volumes out of the kernel's mount table. Any thread.
class LinuxVolumes final : public Volumes
{
public:
    explicit LinuxVolumes(const Scripts &hostScripts) : scripts(hostScripts) {}

    QStringList mountedPaths() const override;
    void unmount(const QString &path, bool force) override;

private:
    const Scripts &scripts;
};

} // namespace platform
