#pragma once

#include "api/DocumentTransfer.h"
#include "api/QBNetworking.h"
#include "state/QBGlobeInformation.h"
#include "support/PrivateBus.h"

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <csignal>
#include <memory>

namespace testing
{

/// A document server of its own process with the demo account signed in, whose session file stands where the service
/// looks for it.
class ServerScene
{
public:
    ServerScene();
    ~ServerScene();

    bool start();
    void stop();
    /// Also after `stop`, on the same port and with the same documents.
    bool restart();
    /// It takes connections and answers nothing until `resume`.
    void pause() { ::kill(static_cast<pid_t>(process.processId()), SIGSTOP); }
    void resume() { ::kill(static_cast<pid_t>(process.processId()), SIGCONT); }
    /// The scenario from now on; waits until it is in force.
    bool setScenario(const QJsonObject &scenario);
    bool signIn();

    QBNetworking &client() { return *networking; }
    /// Entry document of the demo user's own documents.
    QString ownEntry();
    /// Id of a path below the user's own documents (they themselves: null), null when there is nothing.
    QString idOf(const QString &path);
    /// Of all in a folder below the user's own documents (they themselves: null), sorted.
    QStringList names(const QString &path);
    /// Contents on the server, null when there is no such file.
    QByteArray contents(const QString &path);
    /// The file's lock on the server.
    bool isLocked(const QString &path);
    /// Writes past the volume, as another client does.
    bool upload(const QString &path, const QByteArray &bytes);

private:
    bool launch(int port);
    /// Of all in a folder.
    QList<QJsonObject> records(const QString &folderId);

    QTemporaryDir folder;
    QProcess process;
    int port = 0;
    QBGlobeInformation session;
    HttpTransport transport;
    std::unique_ptr<QBNetworking> networking;
};

/// One run of the real service with its volume; it is ended at the latest with this object, and its mount with it.
class MountedService
{
public:
    /// `volumes`: folder for the mount, the process's own when null.
    explicit MountedService(const QString &volumes = {});
    ~MountedService();

    bool isReady();
    QString root() const { return mountFolder + QStringLiteral("/Quillbox"); }
    /// The demo user's own documents.
    QString home() const;
    QString log();
    bool says(const QString &text);
    bool isMounted() const;
    /// Exit code, -1 when it did not end in time or crashed.
    int ended();
    qint64 processId() const { return process.processId(); }
    void kill() { process.kill(); }
    void terminate() { process.terminate(); }
    void endManager() { manager.kill(); }

private:
    const QString mountFolder;
    QString temporary;
    QProcess manager;
    QProcess process;
    QString output;
};

/// What the tests of the mounted volume stand on: a session bus, a server, and the service.
class Mounted
{
protected:
    bool startServer();
    /// Starts the service anew.
    bool mount();

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<ServerScene> server;
    std::unique_ptr<MountedService> service;
    QString home; ///< the demo user's own documents
};

struct ProgramResult {
    int status = -1; ///< -1 when it did not end in time
    QByteArray output;
};
/// A shell script run in `folder`; both outputs.
ProgramResult runScript(const QString &folder, const QString &script);

/// Bytes that look random and are always the same.
QByteArray pattern(qsizetype size, unsigned seed = 1);

} // namespace testing
