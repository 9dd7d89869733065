#include "Arguments.h"
#include "CacheClearing.h"
#include "CompanionService.h"
#include "CompanionStrings.h"
#include "LinkOpener.h"
#include "ManagerWatch.h"
#include "Notice.h"
#include "StopSignals.h"
#include "UserDocuments.h"
#include "UserRequests.h"

#include "files/QBFileSystemGuard.h"
#include "files/QBPathIndicator.h"
#include "platform/Bundle.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Log.h"
#include "platform/SidebarFavorites.h"
#include "platform/UserDefaults.h"
#include "state/QBGlobeInformation.h"
#include "volume/Volume.h"

#include <QCoreApplication>
#include <QUrl>

#include <cstdlib>

namespace
{

constexpr std::chrono::seconds PatienceAtTheEnd{2};

/// The rules are the manager's, whose bundle holds this one among its resources.
volume::Names::Guard nameGuard()
{
    const QString path = platform::Bundle::main().bundlePath() + QStringLiteral("/../QBFileSystemGuard.plist");
    const std::shared_ptr<const QBFileSystemGuard> guard = QBFileSystemGuard::initWithPath(path);
    if (!guard)
        return {};
    return [guard](const QString &name) { return static_cast<int>(guard->analyseNameType(name)); };
}

volume::Volume::Settings volumeSettings(const platform::Host &host)
{
    volume::Volume::Settings settings;
    settings.mountPoint = QBPathIndicator::pathForQuillboxVolume();
    settings.core.stagingFolder = host.folders.caches() + QStringLiteral("/staging");
    settings.core.guard = nameGuard();
    settings.rescueFolder = QBPathIndicator::pathForBackup();
    return settings;
}

/// The manager's bundle holds this one among its resources, and the program that shows messages beside its own.
QString noticeProgram()
{
    return platform::Bundle::main().bundlePath() + QStringLiteral("/../../MacOS/QuillboxNotice");
}

QString panelProgram()
{
    return platform::Bundle::main().bundlePath() + QStringLiteral("/../../MacOS/QuillboxPanel");
}

UserRequests::Surroundings requestSurroundings(volume::Volume &volume, const platform::Host &host, Notice &notice)
{
    const QString mountPoint = QBPathIndicator::pathForQuillboxVolume();
    const auto documents = std::make_shared<UserDocuments>(volume.serverDocuments(), mountPoint);
    return {.panelProgram = panelProgram(),
            .itemsFolder = host.folders.temporary(),
            .volume = mountPoint,
            .transfers = [&volume, mountPoint] { return UserRequests::transfersOf(volume.unsavedPaths(), mountPoint); },
            .favorites = [documents](const std::function<bool()> &wanted) { return documents->favorites(wanted); },
            .uploadFolder = [documents] { return documents->ownFolder(); },
            .tellNoUploadFolder = [&notice] { notice.show(QStringLiteral("no-upload-folder")); }};
}

LinkOpener::Steps linkSteps(volume::LinkLocator &links, Notice &notice, UserRequests &requests)
{
    using Outcome = volume::LinkLocator::Outcome;
    return {
        .locate = [&links](const QString &link) { return links.locate(link); },
        .openFolder = [](const QString &folder) { platform::host().workspace.openURL(QUrl::fromLocalFile(folder)); },
        .tellUser =
            [&notice](Outcome outcome) {
                notice.show(outcome == Outcome::NoServer ? QStringLiteral("no-server")
                                                         : QStringLiteral("link-not-found"));
            },
        .searchFor = [&requests](const QString &name) { requests.searchFor(name); }};
}

void openLink(LinkOpener &opener, const SocketMessage &message)
{
    // The file manager's action tells the name of a file, other programs a selected text.
    const bool mayBeName = message.key == SocketMessage::rightService();
    opener.open(message.text, mayBeName ? LinkOpener::Reading::LinkOrName : LinkOpener::Reading::LinkOnly);
}

/// Ends the event loop. Several causes may come together: the log names the first.
class StopCause
{
public:
    void because(QStringView cause)
    {
        if (!told)
            platform::log(QStringLiteral("FUSEService: stopping because %1").arg(cause));
        told = true;
        QCoreApplication::quit();
    }

private:
    bool told = false;
};

/// 0, or the exit code after a log line when there is no manager to serve.
int watchManager(ManagerWatch &watch)
{
    const std::optional<qint64> manager = managerProcessId(QCoreApplication::arguments().mid(1));
    if (!manager) {
        platform::log(QStringLiteral("FUSEService: the one argument is the process id of the manager"));
        return CompanionStrings::BadArguments;
    }
    if (watch.watch(*manager))
        return 0;
    platform::log(QStringLiteral("FUSEService: there is no manager %1").arg(*manager));
    return CompanionStrings::NoManager;
}

/// From the first message to the last; the exit code.
int serve(platform::Host &host, const ManagerWatch &watch, const StopSignals &signals)
{
    QBGlobeInformation &session = QBGlobeInformation::sharedGlobeInformation();
    const volume::Volume::Settings settings = volumeSettings(host);
    volume::Volume volume(session, platform::UserDefaults::standard(), settings);
    volume::LinkLocator links(volume.serverDocuments(), QBPathIndicator::pathForQuillboxVolume());
    Notice notice(noticeProgram());
    UserRequests requests(requestSurroundings(volume, host, notice));
    LinkOpener linkOpener(linkSteps(links, notice, requests));
    requests.observe(host.distributed);
    CompanionService service(session, host.distributed,
                             host.folders.temporary() + u'/' + CompanionStrings::socketName(),
                             [&volume] { return volume.start(); });
    StopCause stop;
    QObject::connect(&volume, &volume::Volume::detached, [&] { stop.because(u"somebody else detached the volume"); });
    QObject::connect(&watch, &ManagerWatch::managerEnded, [&] { stop.because(u"its manager has ended"); });
    QObject::connect(&signals, &StopSignals::stopRequested, [&](const QString &cause) { stop.because(cause); });
    QObject::connect(&service, &CompanionService::stopRequested, [&] { stop.because(u"the stop notification came"); });
    CacheClearing cache(QBClearCacheInformation::defaultClearCacheInformation(), session.account().userID,
                        settings.core.stagingFolder);
    service.setMessageHandler([&linkOpener](const SocketMessage &message) { openLink(linkOpener, message); });
    if (const int failure = service.start())
        return failure;
    platform::dispatchGlobal([folder = settings.mountPoint] { platform::addToSidebarFavorites(folder); });
    cache.seed();
    const int result = QCoreApplication::exec();
    volume.stop(); // before the socket goes, so that the next service meets neither
    cache.clearIfWanted();
    // Answers in progress speak to the server of the volume, which goes next.
    if (!platform::drainBackground(PatienceAtTheEnd))
        std::_Exit(result);
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    StopSignals::block();
    const QCoreApplication application(argc, argv);
    ManagerWatch watch;
    if (const int failure = watchManager(watch))
        return failure;
    const StopSignals signals;
    platform::Host &host = platform::host();
    if (!host.folders.temporary().isNull())
        return serve(host, watch, signals);
    platform::log(QStringLiteral("FUSEService: there is no private folder for the socket"));
    return CompanionStrings::NoSocket;
}
