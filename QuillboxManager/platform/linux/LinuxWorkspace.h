#pragma once

#include "platform/Host.h"

namespace platform
{

/// Applications are processes of this user whose executable is the main one of a bundle.
class LinuxWorkspace final : public Workspace
{
public:
    QList<RunningApplication> runningApplications(const QString &bundleIdentifier) const override;
    void terminate(const RunningApplication &application) override;
    bool openURL(const QUrl &url) override;
};

} // namespace platform
