#include "install/Installer.h"

#include "install/BundleCopy.h"
#include "install/CodeResources.h"
#include "install/InstallLock.h"
#include "install/NewBundle.h"
#include "platform/Log.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace install
{

namespace
{

QString refused(const QString &path, const QString &problem)
{
    return u"%1 is refused: %2"_s.arg(path, problem);
}

} // namespace

const char *Installer::nameOf(Step step)
{
    constexpr const char *names[] = {"manager ended", "checked",     "folder made", "copied",    "compared",
                                     "exchanged",     "detached",    "started",     "confirmed", "stayed",
                                     "done",          "rolled back", "refused"};
    return names[static_cast<int>(step)];
}

Installer::Installer(UpdateRequest given, Surroundings around)
    : request(std::move(given)), surroundings(std::move(around)), client(request.bundle, surroundings.patience),
      swap(request.bundle, surroundings.exchange)
{
}

bool Installer::run()
{
    const QString problem = problemWithBundle(request.bundle);
    if (!problem.isNull()) {
        surroundings.images.detach(request.image);
        platform::log(refused(request.bundle, problem));
        // The manager made way in vain, as for a bundle that an administrator installed.
        if (problemWithPath(request.bundle).isNull() && problemWithProduct(request.bundle).isNull() &&
            client.waitForEnd())
            startWhereNoneRuns();
        return false;
    }
    const InstallLock lock(surroundings.lockFolder, surroundings.patience.lockIsFree);
    if (!lock.isHeld()) {
        platform::log(u"Another update is at work"_s);
        return false;
    }
    const QString failure = install();
    surroundings.images.detach(request.image);
    if (!failure.isNull())
        return refuse(failure);
    surroundings.reached(Step::Detached);
    return tryNewClient();
}

/// All up to the exchange; null when the new bundle stands at its place.
QString Installer::install()
{
    if (!client.waitForEnd())
        return u"The manager does not end"_s;
    surroundings.reached(Step::ManagerEnded);
    swap.repair();
    swap.confirm(); // a client that could ask for an update works
    if (const QString problem = problemWithImage(request.image); !problem.isNull())
        return refused(request.image, problem);
    QString problem = surroundings.images.problemWithApplication(request.newApplication, request.image);
    if (problem.isNull())
        problem = problemWithCandidate(request.newApplication, request.bundle);
    if (!problem.isNull())
        return refused(request.newApplication, problem);
    surroundings.reached(Step::Checked);
    return takeOver();
}

QString Installer::takeOver()
{
    if (!swap.prepare())
        return u"No work folder can be made beside %1"_s.arg(request.bundle);
    surroundings.reached(Step::FolderMade);
    if (const QString problem = copyBundle(request.newApplication, swap.staged()); !problem.isNull())
        return u"The new application cannot be copied: %1"_s.arg(problem);
    surroundings.reached(Step::Copied);
    // The copy is what will run, so it is the copy that is judged.
    QString problem = problemWithCandidate(swap.staged(), request.bundle);
    if (problem.isNull())
        problem = problemWithCodeResources(swap.staged());
    if (problem.isNull())
        problem = problemWithExecutable(swap.staged());
    if (!problem.isNull())
        return refused(request.newApplication, problem);
    surroundings.reached(Step::Compared);
    if (client.isRunning())
        return u"The client was started again meanwhile"_s;
    if (!swap.exchange())
        return u"The new application cannot take the place of the old one"_s;
    surroundings.reached(Step::Exchanged);
    return {};
}

bool Installer::tryNewClient()
{
    if (!client.isRunning() && !client.start())
        return takeBack();
    surroundings.reached(Step::Started);
    if (!client.waitUntil([this] { return !swap.isPending(); }))
        return takeBack();
    surroundings.reached(Step::Confirmed);
    if (!client.stays())
        return takeBack();
    surroundings.reached(Step::Stayed);
    swap.clear();
    surroundings.reached(Step::Done);
    return true;
}

bool Installer::takeBack()
{
    platform::log(u"The new version does not work: the old one comes back"_s);
    client.end();
    if (!swap.rollBack()) {
        platform::log(u"The old version cannot be put back"_s);
        return false;
    }
    surroundings.reached(Step::RolledBack);
    swap.clear();
    startWhereNoneRuns();
    return false;
}

bool Installer::refuse(const QString &problem)
{
    platform::log(problem);
    swap.clear();
    surroundings.reached(Step::Refused);
    startWhereNoneRuns();
    return false;
}

void Installer::startWhereNoneRuns() const
{
    if (!client.isRunning() && !client.start())
        platform::log(u"The client cannot be started"_s);
}

bool Installer::resume()
{
    const InstallLock lock(surroundings.lockFolder, surroundings.patience.lockIsFree);
    surroundings.images.detach(request.image);
    if (!lock.isHeld() || !problemWithPath(request.bundle).isNull())
        return false;
    swap.repair();
    if (!problemWithBundle(request.bundle).isNull())
        return false;
    if (swap.isPending())
        return tryNewClient();
    swap.clear();
    startWhereNoneRuns();
    return false;
}

} // namespace install
