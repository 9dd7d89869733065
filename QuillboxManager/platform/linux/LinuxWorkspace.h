#pragma once

#include "platform/Host.h"

namespace platform
{

class SessionBus;

/// Applications are processes of this user whose executable is the main one of a bundle. Addresses with a secret travel
/// in a page that only this user may read, because argument lists are for everybody to see.
class LinuxWorkspace final : public Workspace
{
public:
    LinuxWorkspace(const Folders &hostFolders, SessionBus &sessionBus) : folders(hostFolders), bus(sessionBus) {}

    QList<RunningApplication> runningApplications(const QString &bundleIdentifier) const override;
    void terminate(const RunningApplication &application) override;
    bool openURL(const QUrl &url) override;
    bool openSecretURL(const QUrl &url) override;

private:
    const Folders &folders;
    SessionBus &bus;
};

} // namespace platform
