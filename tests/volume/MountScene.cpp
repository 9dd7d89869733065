#include "MountScene.h"

#include "api/MXRRSA.h"
#include "files/QBPathIndicator.h"
#include "platform/AtomicFile.h"
#include "platform/Host.h"
#include "platform/UserDefaults.h"
#include "support/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <random>
#include <utility>

using namespace Qt::StringLiterals;

namespace testing
{
namespace
{

constexpr int patience = 20'000;

ClientServices servicesWithCertificate(const QString &path)
{
    ClientServices services;
    services.encryptor = [path] { return MXRRSA::initWithCertificate(path); };
    services.isServiceRunning = [] { return false; };
    return services;
}

class MemorySink : public ByteSink
{
public:
    bool write(const char *bytes, qint64 count) override
    {
        contents.append(bytes, static_cast<qsizetype>(count));
        return true;
    }
    QByteArray contents = "";
};

QString sessionFile()
{
    const QString path = QBPathIndicator::pathForGlobeInformation();
    QDir().mkpath(QFileInfo(path).path());
    return path;
}

QProcessEnvironment environmentWith(const QString &volumes, const QString &temporary)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!volumes.isEmpty()) { // a second service of the same user, as on another machine
        environment.insert(u"QUILLBOX_VOLUMES"_s, volumes);
        environment.insert(u"XDG_RUNTIME_DIR"_s, temporary);
        environment.insert(u"TMPDIR"_s, temporary);
        environment.insert(u"XDG_CACHE_HOME"_s, temporary);
    }
    return environment;
}

} // namespace

ServerScene::ServerScene() : session(sessionFile(), false) {}

ServerScene::~ServerScene()
{
    stop();
}

bool ServerScene::launch(int wantedPort)
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(SERVER_PROGRAM),
                  {u"--data"_s, folder.path(), u"--http-port"_s, QString::number(wantedPort), u"--scenario"_s,
                   folder.filePath(u"scenario.json"_s)});
    QByteArray said;
    const bool ready = QTest::qWaitFor(
        [&] {
            said += process.readAllStandardOutput();
            return said.contains("ready http=") && said.contains('\n');
        },
        patience);
    port = said.mid(said.indexOf("http=") + 5).split(' ').first().toInt();
    return ready && port > 0;
}

bool ServerScene::start()
{
    return writeFile(folder.filePath(u"scenario.json"_s), "{}") && launch(0) && signIn();
}

bool ServerScene::signIn()
{
    session.setServer({u"127.0.0.1"_s, QString::number(port), false});
    networking = std::make_unique<QBNetworking>(session, transport, platform::UserDefaults::standard(),
                                                servicesWithCertificate(folder.filePath(u"public_key.der"_s)));
    bool signedIn = false;
    networking->loginWithAccountName(u"demo"_s, u"Quillbox-demo1"_s, {}, {},
                                     [&](const QBError &error, const ServerReply &) { signedIn = !error; });
    return signedIn;
}

void ServerScene::stop()
{
    process.terminate();
    process.waitForFinished(patience);
}

bool ServerScene::restart()
{
    stop();
    return launch(port);
}

bool ServerScene::setScenario(const QJsonObject &scenario)
{
    // A marker in the settings tells when the server has read the file.
    static int marker = 0;
    const QString version = QString::number(1000 + ++marker);
    QJsonObject complete = scenario;
    complete.insert(u"internal_link_prefix"_s, version);
    return platform::writeAtomically(folder.filePath(u"scenario.json"_s), QJsonDocument(complete).toJson()) &&
           QTest::qWaitFor(
               [&] {
                   const ServerReply reply = networking->getServerConfig();
                   return reply && reply->value(u"internal_link_prefix"_s) == version;
               },
               patience);
}

QString ServerScene::ownEntry()
{
    const ServerReply reply = networking->getInfoByDocType(1);
    return reply ? reply->value(u"docinfos"_s).toArray().first().toObject().value(u"docid"_s).toString() : QString();
}

QList<QJsonObject> ServerScene::records(const QString &folderId)
{
    const ServerReply listing = networking->requestDirectoryListWithDocID(folderId, false, nullptr);
    QList<QJsonObject> found;
    for (const QString &kind : {u"dirs"_s, u"files"_s})
        for (const QJsonValue &record : listing ? listing->value(kind).toArray() : QJsonArray())
            found.append(record.toObject());
    return found;
}

QString ServerScene::idOf(const QString &path)
{
    QString id = ownEntry();
    for (const QString &name : path.split(u'/', Qt::SkipEmptyParts)) {
        const QString parent = std::exchange(id, QString());
        for (const QJsonObject &record : records(parent))
            if (record.value(u"name"_s) == name)
                id = record.value(u"docid"_s).toString();
        if (id.isNull())
            return {};
    }
    return id;
}

QStringList ServerScene::names(const QString &path)
{
    QStringList found;
    for (const QJsonObject &record : records(idOf(path)))
        found.append(record.value(u"name"_s).toString());
    found.sort();
    return found;
}

QByteArray ServerScene::contents(const QString &path)
{
    MemorySink sink;
    QBError error;
    DocumentTransfer(*networking).downloadFile(idOf(path), sink, &error);
    return error ? QByteArray() : sink.contents;
}

bool ServerScene::isLocked(const QString &path)
{
    const ServerReply reply = networking->getFileLockInfo(idOf(path));
    return reply && reply->value(u"islocked"_s).toBool();
}

bool ServerScene::upload(const QString &path, const QByteArray &bytes)
{
    MemorySource source(bytes);
    QBError error;
    DocumentTransfer(*networking).createFile(idOf(path.section(u'/', 0, -2)), path.section(u'/', -1), source, &error);
    return !error;
}

MountedService::MountedService(const QString &volumes)
    : mountFolder(volumes.isEmpty() ? platform::host().folders.volumes() : volumes)
{
    temporary = mountFolder + u"-temporary"_s;
    QDir().mkpath(temporary);
    manager.start(u"sleep"_s, {u"600"_s});
    manager.waitForStarted();
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setProcessEnvironment(environmentWith(volumes, temporary));
    process.start(QStringLiteral(SERVICE_PROGRAM), {QString::number(manager.processId())});
}

MountedService::~MountedService()
{
    process.terminate();
    if (!process.waitForFinished(patience))
        process.kill();
    process.waitForFinished();
    if (QTest::currentTestFailed())
        qInfo("service log:\n%s", qPrintable(log()));
    manager.kill();
    manager.waitForFinished();
    if (isMounted())
        QProcess::execute(u"fusermount3"_s, {u"-u"_s, u"-z"_s, u"-q"_s, root()});
}

QString MountedService::home() const
{
    const QString own = root() + u"/MyDocuments.localized"_s;
    const QStringList names = QDir(own).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return own + u'/' + names.value(0);
}

QString MountedService::log()
{
    output += QString::fromUtf8(process.readAll());
    return output;
}

bool MountedService::says(const QString &text)
{
    return QTest::qWaitFor([&] { return log().contains(text); }, patience);
}

bool MountedService::isReady()
{
    return says(u"FUSEService: ready"_s);
}

bool MountedService::isMounted() const
{
    return platform::host().volumes.mountedPaths().contains(root());
}

int MountedService::ended()
{
    const bool over = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, patience);
    return over && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool Mounted::startServer()
{
    bus = std::make_unique<PrivateBus>();
    server = std::make_unique<ServerScene>();
    return server->start();
}

bool Mounted::mount()
{
    service.reset();
    service = std::make_unique<MountedService>();
    const bool ready = service->isReady();
    home = service->home();
    return ready;
}

ProgramResult runScript(const QString &folder, const QString &script)
{
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.setWorkingDirectory(folder);
    shell.start(u"/bin/sh"_s, {u"-c"_s, script});
    // Events are handled meanwhile, as the service's output would fill its pipe.
    if (!QTest::qWaitFor([&] { return shell.state() == QProcess::NotRunning; }, 60'000))
        return {};
    return {shell.exitStatus() == QProcess::NormalExit ? shell.exitCode() : -1, shell.readAll()};
}

QByteArray pattern(qsizetype size, unsigned seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    std::minstd_rand random(seed);
    for (char &byte : bytes)
        byte = static_cast<char>(random() >> 8);
    return bytes;
}

} // namespace testing
