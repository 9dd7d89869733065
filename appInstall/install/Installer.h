#pragma once

#include "install/AttachedImages.h"
#include "install/BundleSwap.h"
#include "install/ClientRuns.h"
#include "install/UpdateRequest.h"

#include <functional>

namespace install
{

/// Puts the application of a disk image in the place of the installed one and starts it. The manager must end by
/// itself. One run; blocks; one thread.
///
/// Whatever goes wrong, the old bundle is at its place again and, when nothing of it runs, is started; the image is
/// detached. The image file itself is left to the manager, which made it.
class Installer
{
public:
    /// What has been done, in this order; a run that fails leaves it early and ends with RolledBack or with Refused.
    enum class Step {
        ManagerEnded,
        Checked,
        FolderMade,
        Copied,
        Compared,
        Exchanged,
        Detached,
        Started,
        Confirmed,
        Stayed,
        Done,
        RolledBack,
        Refused
    };
    static const char *nameOf(Step step);

    struct Surroundings {
        AttachedImages images;
        QString lockFolder;
        Patience patience;
        BundleSwap::Exchange exchange;
        std::function<void(Step)> reached; ///< called after each step
    };

    Installer(UpdateRequest request, Surroundings surroundings);

    /// True when the new version runs.
    bool run();
    /// Takes up the work of a run that was killed, in whichever step. True when the new version runs.
    bool resume();

private:
    QString install();
    QString takeOver();
    bool tryNewClient();
    bool takeBack();
    bool refuse(const QString &problem);
    void startWhereNoneRuns() const;

    const UpdateRequest request;
    const Surroundings surroundings;
    const ClientRuns client;
    BundleSwap swap;
};

} // namespace install
