#include "MountScene.h"

#include "channel/GDUnixSocketClient.h"
#include "channel/SocketMessage.h"
#include "files/QBClearCacheInformation.h"
#include "platform/Host.h"
#include "support/PrivateBus.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;
using testing::MountedService;
using testing::ServerScene;

/// What the real companion does beside the volume: links that lead to folders, and the cache at the end.
class TestCompanionDuties : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { service.reset(); }
    void opensTheFolderOfALink_data();
    void opensTheFolderOfALink();
    void survivesABurst();
    void clearsTheCacheWhenAsked_data();
    void clearsTheCacheWhenAsked();

private:
    void send(const QList<SocketMessage> &messages);
    /// What the desktop was asked to open, once it was.
    QString opened();

    QTemporaryDir desktop;
    std::unique_ptr<testing::PrivateBus> bus;
    std::unique_ptr<ServerScene> server;
    std::unique_ptr<MountedService> service;
    std::shared_ptr<GDUnixSocketClient> client;
};

void TestCompanionDuties::initTestCase()
{
    QFile opener(desktop.filePath(u"xdg-open"_s));
    QVERIFY(opener.open(QIODevice::WriteOnly));
    opener.write("#!/bin/sh\necho \"$1\" >\"" + desktop.path().toUtf8() + "/new\"\nmv \"" + desktop.path().toUtf8() +
                 "/new\" \"" + desktop.path().toUtf8() + "/opened\"\n");
    opener.close();
    QVERIFY(opener.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    qputenv("PATH", desktop.path().toUtf8() + ':' + qgetenv("PATH"));
    bus = std::make_unique<testing::PrivateBus>();
    server = std::make_unique<ServerScene>();
    QVERIFY(server->start());
    QVERIFY(server->client().requestCreateDirWithParentDocID(server->ownEntry(), u"报告 2026"_s, nullptr));
    QVERIFY(server->upload(u"报告 2026/plan.txt"_s, "plan"));
}

void TestCompanionDuties::init()
{
    QFile::remove(desktop.filePath(u"opened"_s));
    service = std::make_unique<MountedService>();
    QVERIFY2(service->isReady(), qPrintable(service->log()));
}

void TestCompanionDuties::send(const QList<SocketMessage> &messages)
{
    client = GDUnixSocketClient::initWithSocketPath(platform::host().folders.temporary() + u"/search_socket"_s);
    QVERIFY(client->connectWithAutoRead(false));
    for (const SocketMessage &message : messages) // in the background: the service waits for whoever reads its log
        client->writeData(message.bytes(), GDUnixSocket::WriteCompletion());
}

QString TestCompanionDuties::opened()
{
    QFile note(desktop.filePath(u"opened"_s));
    const bool there = QTest::qWaitFor([&] { return note.exists(); }, 10'000);
    return there && note.open(QIODevice::ReadOnly) ? QUrl(QString::fromUtf8(note.readAll().trimmed())).toLocalFile()
                                                   : QString();
}

void TestCompanionDuties::opensTheFolderOfALink_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("document");
    QTest::addColumn<QString>("folder");
    const QString file = u"报告 2026/plan.txt"_s;
    QTest::newRow("file") << u"StatusBarSearching"_s << u"%1"_s << file << u"/报告 2026"_s;
    QTest::newRow("address") << u"StatusBarSearching"_s << u"https://cloud.example/link?docid=%1"_s << file
                             << u"/报告 2026"_s;
    QTest::newRow("folder") << u"AppEvent"_s << u"quillbox://open?docid=%1"_s << u"报告 2026"_s << u"/报告 2026"_s;
    QTest::newRow("entry") << u"RightService"_s << u"%1"_s << QString() << QString();
}

void TestCompanionDuties::opensTheFolderOfALink()
{
    QFETCH(const QString, key);
    QFETCH(const QString, link);
    QFETCH(const QString, document);
    QFETCH(const QString, folder);
    const QString id = document.isNull() ? server->ownEntry() : server->idOf(document);
    send({{key, link.arg(id)}});
    QCOMPARE(opened(), service->home() + folder);
}

void TestCompanionDuties::survivesABurst()
{
    const QString id = server->idOf(u"报告 2026"_s);
    QList<SocketMessage> messages(2'000, {u"StatusBarSearching"_s, QString(500, u'x')});
    messages.append({u"StatusBarSearching"_s, QString(100'000, u'x')});
    messages.append({u"StatusBarSearching"_s, id});
    send(messages);
    QCOMPARE(opened(), service->home() + u"/报告 2026"_s);
    const QString log = service->log();
    QVERIFY(log.contains(u"a link leads to no document"_s) && !log.contains(id));
}

void TestCompanionDuties::clearsTheCacheWhenAsked_data()
{
    QTest::addColumn<bool>("wanted");
    QTest::newRow("not wanted") << false;
    QTest::newRow("wanted") << true;
}

void TestCompanionDuties::clearsTheCacheWhenAsked()
{
    QFETCH(const bool, wanted);
    const QString userID = server->client().globeInformation().account().userID;
    QBClearCacheInformation::defaultClearCacheInformation().updateClearCacheSettingWindowFlag(wanted, userID);
    const QString left = platform::host().folders.caches() + u"/staging/left/over"_s;
    QVERIFY(QDir().mkpath(left));
    service->terminate();
    QCOMPARE(service->ended(), 0);
    QCOMPARE(QFile::exists(left), !wanted);
}

REGISTER_TEST(TestCompanionDuties)
#include "TestCompanionDuties.moc"
