#pragma once

#include "volume/FuseSession.h"
#include "volume/MountPoint.h"
#include "volume/ServerDocuments.h"
#include "volume/VolumeCore.h"

#include <QObject>

namespace volume
{

/// The signed-in user's documents as a mounted volume. Main thread.
class Volume : public QObject
{
    Q_OBJECT
public:
    struct Settings {
        QString mountPoint;
        VolumeCore::Settings core;
        QString rescueFolder; ///< for what cannot be saved at the end
        std::chrono::milliseconds callTimeout{15'000};
        std::chrono::milliseconds savingPatience{5'000}; ///< for what is unsaved at the end
    };
    Volume(QBGlobeInformation &session, platform::UserDefaults &defaults, const Settings &settings,
           QObject *parent = nullptr);
    /// Stops.
    ~Volume() override;

    /// False after a log line that says why.
    bool start();
    /// Detaches the volume, saves what is unsaved for a bounded time and ends all calls.
    void stop();

    /// The server behind the volume, for other questions about its documents.
    ServerDocuments &serverDocuments() { return documents; }
    /// See VolumeTree. Any thread.
    QStringList unsavedPaths() { return core.tree().unsavedPaths(); }

Q_SIGNALS:
    /// Somebody else detached the volume.
    void detached();

private:
    void saveForAWhile();

    const Settings settings;
    const MountPoint mountPoint;
    ServerDocuments documents;
    VolumeCore core;
    std::unique_ptr<FuseSession> session;
};

} // namespace volume
