#include "MountScene.h"

#include "channel/GDUnixSocketClient.h"
#include "channel/SocketMessage.h"
#include "files/QBClearCacheInformation.h"
#include "platform/Host.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

/// What the real companion does beside the volume: links that lead to folders, and the cache at the end.
class TestCompanionDuties : public QObject, private testing::Mounted
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { service.reset(); }
    void initTestCase()
    {
        const QByteArray place = desktop.path().toUtf8();
        const QByteArray script =
            "#!/bin/sh\necho \"$1\" >'" + place + "/new'\nmv '" + place + "/new' '" + place + "/opened'\n";
        QVERIFY(testing::writeFile(desktop.filePath(u"xdg-open"_s), script, 0700));
        qputenv("PATH", place + ':' + qgetenv("PATH"));
        QVERIFY(startServer());
        QVERIFY(server->client().requestCreateDirWithParentDocID(server->ownEntry(), u"报告 2026"_s, nullptr));
        QVERIFY(server->upload(u"报告 2026/plan.txt"_s, "plan"));
    }

    void init()
    {
        QFile::remove(desktop.filePath(u"opened"_s));
        QVERIFY2(mount(), qPrintable(service->log()));
    }

    void opensTheFolderOfALink_data()
    {
        const testing::Rows<QString, QString, QString, QString> row("key", "link", "document", "folder");
        const QString file = u"报告 2026/plan.txt"_s;
        row("file", "StatusBarSearching", "%1", file, "/报告 2026");
        row("address", "StatusBarSearching", "https://cloud.example/link?docid=%1", file, "/报告 2026");
        row("folder", "AppEvent", "quillbox://open?docid=%1", "报告 2026", "/报告 2026");
        row("entry", "RightService", "%1", {}, {});
    }
    void opensTheFolderOfALink()
    {
        QFETCH(const QString, key);
        QFETCH(const QString, link);
        QFETCH(const QString, document);
        QFETCH(const QString, folder);
        const QString id = document.isNull() ? server->ownEntry() : server->idOf(document);
        send({{key, link.arg(id)}});
        QCOMPARE(opened(), service->home() + folder);
    }

    void survivesABurst()
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

    void clearsTheCacheWhenAsked_data()
    {
        const testing::Rows<bool> row("wanted");
        row("not wanted", false);
        row("wanted", true);
    }
    void clearsTheCacheWhenAsked()
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

private:
    void send(const QList<SocketMessage> &messages)
    {
        client = GDUnixSocketClient::initWithSocketPath(platform::host().folders.temporary() + u"/search_socket"_s);
        QVERIFY(client->connectWithAutoRead(false));
        for (const SocketMessage &message : messages) // in the background: the service waits for whoever reads its log
            client->writeData(message.bytes(), GDUnixSocket::WriteCompletion());
    }

    /// What the desktop was asked to open, once it was.
    QString opened()
    {
        const QString note = desktop.filePath(u"opened"_s);
        const bool there = QTest::qWaitFor([&] { return QFile::exists(note); }, 10'000);
        return there ? QUrl(QString::fromUtf8(testing::contentOf(note).trimmed())).toLocalFile() : QString();
    }

    QTemporaryDir desktop;
    std::shared_ptr<GDUnixSocketClient> client;
};

REGISTER_TEST(TestCompanionDuties)
#include "TestCompanionDuties.moc"
