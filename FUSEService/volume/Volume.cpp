#include "volume/Volume.h"

#include "platform/Log.h"

#include <QDir>
#include <QFile>

#include <future>

using namespace Qt::StringLiterals;

namespace volume
{
namespace
{

/// The folder for staged contents, for the user alone.
bool makeStagingFolder(const QString &path)
{
    return QDir().mkpath(path) && QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

Volume::Volume(QBGlobeInformation &globe, platform::UserDefaults &defaults, const Settings &volumeSettings,
               QObject *parent)
    : QObject(parent), settings(volumeSettings), mountPoint(settings.mountPoint),
      documents(globe, defaults, settings.callTimeout), core(documents, settings.core)
{
}

Volume::~Volume()
{
    stop();
    documents.shutDown();
}

bool Volume::start()
{
    if (!makeStagingFolder(settings.core.stagingFolder)) {
        platform::log(u"FUSEService: %1 cannot be made"_s.arg(settings.core.stagingFolder));
        return false;
    }
    if (const QString problem = mountPoint.prepare(); !problem.isNull()) {
        platform::log(u"FUSEService: %1"_s.arg(problem));
        return false;
    }
    const auto ended = [this] {
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT detached(); }, Qt::QueuedConnection);
    };
    session = std::make_unique<FuseSession>(core, ended);
    if (session->mount(settings.mountPoint))
        return true;
    platform::log(u"FUSEService: the volume cannot be mounted at %1"_s.arg(settings.mountPoint));
    session.reset();
    return false;
}

void Volume::stop()
{
    if (!session)
        return;
    mountPoint.detach();
    saveForAWhile();
    documents.shutDown();
    session.reset();
    core.tree().rescueUnsaved(settings.rescueFolder);
}

void Volume::saveForAWhile()
{
    std::future<void> saving = std::async(std::launch::async, [this] { core.tree().saveAll(); });
    if (saving.wait_for(settings.savingPatience) != std::future_status::ready)
        documents.shutDown(); // ends the call it waits for, and so the saving
}

} // namespace volume
