#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/Rows.h"
#include "support/ScriptedServer.h"
#include "support/StreamServer.h"
#include "support/TestMain.h"
#include "update/QBFileDownloader.h"
#include "update/QBFileHandle.h"

#include <QTemporaryDir>

#include <fcntl.h>

using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::Rows;
using testing::ScriptedAnswer;
using testing::ScriptedServer;

namespace
{

struct Destination : QBDownloadFile {
    explicit Destination(const QString &file) : path(file) {}
    QString backupPath() const override { return path; }
    const QString path;
};

} // namespace

class TestFileDownloader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ends.clear();
        folder = std::make_unique<QTemporaryDir>();
        path = folder->filePath(u"file"_s);
        QVERIFY(testing::writeFile(path, "old content"));
        download = std::make_unique<QBFileDownloader>(std::make_shared<Destination>(path), transport);
    }

    void fillsTheFile_data()
    {
        const Rows<ScriptedAnswer, bool, QByteArray> row("answer", "succeeds", "expected");
        const QByteArray large(100'000, 'n');
        row("longer", ScriptedAnswer::reply(large), true, large);
        row("shorter keeps the tail", ScriptedAnswer::reply("NEW"), true, "NEW content");
        row("nothing", ScriptedAnswer::reply(""), true, "old content");
        row("error page", ScriptedAnswer::reply("gone", 404), true, "gonecontent");
        row("cut", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nNEW"), false, "NEW content");
    }
    void fillsTheFile()
    {
        QFETCH(const ScriptedAnswer, answer);
        QFETCH(const bool, succeeds);
        ScriptedServer server;
        server.expect("GET /a?b=c ", answer);
        start({{u"URL"_s, server.url(u"/a?b=c"_s)}});
        QTRY_COMPARE(ends.size(), 1);
        QCOMPARE(ends.first().code(), succeeds ? 0 : 404444);
        QTEST(contentOf(path), "expected");
        QCOMPARE(server.complaint(), QString());
    }

    void dropsWhatHasNoFile()
    {
        QVERIFY(QFile::remove(path));
        const testing::LogRecorder log;
        ScriptedServer server;
        server.expect("GET / ", ScriptedAnswer::reply("NEW"));
        start({{u"URL"_s, server.url()}});
        QTRY_COMPARE(ends.size(), 1);
        QVERIFY(!ends.first() && !QFile::exists(path));
        QVERIFY(log.contains(u"ERROR: fileHandleForUpdatingAtPath "_s + path));
    }

    void sendsTheDescription()
    {
        ScriptedServer server;
        server.expect("PUT / ", ScriptedAnswer::reply("ok"));
        start({{u"URL"_s, server.url()},
               {u"Method"_s, u"PUT"_s},
               {u"X-Kind"_s, u"报告; a=\"b\""_s},
               {u"Content-Length"_s, u"5000"_s},
               {u"Transfer-Encoding"_s, u"chunked"_s}});
        QTRY_COMPARE(ends.size(), 1);
        QVERIFY(!ends.first());
        const QByteArray request = server.requests().value(0);
        QVERIFY(request.contains("\r\nX-Kind: 报告; a=\"b\"\r\n"));
        QVERIFY(!request.contains("5000") && !request.contains("chunked") && !request.contains("Range"));
    }

    void refusesHostileDescriptions_data()
    {
        const Rows<QString, QString> row("key", "value");
        row("line break in a value", "X-A", "1\r\nX-B: 2");
        row("null character", "X-A", u"1\0002"_s);
        row("line break in a name", "X-A: 1\r\nX-B", "2");
        row("no name", "", "2");
        row("huge", "X-A", QString(100'000, u'a'));
        row("method with a line break", "Method", "GET / HTTP/1.1\r\nX-B: 2\r\n\r\nGET");
        row("file address", "URL", "file:///etc/passwd");
        row("address with a line break", "URL", "http://127.0.0.1:1/\r\nX-B: 2");
    }
    void refusesHostileDescriptions()
    {
        QFETCH(const QString, key);
        QFETCH(const QString, value);
        ScriptedServer server;
        QBFileDownloader::Information description{{u"URL"_s, server.url()}, {u"Method"_s, u"GET"_s}};
        description.insert(key, value);
        start(description);
        QVERIFY2(ends.isEmpty(), "told later, never inside the call");
        QTRY_COMPARE(ends.size(), 1);
        QCOMPARE(ends.first().code(), 404444);
        QVERIFY(ends.first().domain() == QBError::serverDomain() && ends.first().userInfo().isEmpty());
        QCOMPARE(contentOf(path), "old content");
        QCOMPARE(server.complaint(), QString());
    }

    void letsOnlyTheLatestWrite()
    {
        testing::StreamServer slow({.head = "HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n",
                                    .zeros = 1'000'000,
                                    .pause = std::chrono::milliseconds(5),
                                    .chunk = 1000});
        ScriptedServer server;
        server.expect("GET / ", ScriptedAnswer::reply("NEW"));
        start({{u"URL"_s, u"http://127.0.0.1:%1/"_s.arg(slow.port())}});
        QTRY_COMPARE(contentOf(path).left(1), QByteArray(1, '\0'));
        start({{u"URL"_s, server.url()}});
        QCOMPARE(ends.size(), 1);
        QTRY_COMPARE(ends.size(), 2);
        QVERIFY(ends.first() && !ends.last());
        const QByteArray kept = contentOf(path);
        QVERIFY(kept.startsWith("NEW"));
        QTest::qWait(50);
        QCOMPARE(contentOf(path), kept);
        QCOMPARE(ends.size(), 2);
    }

    void endsSilentlyWhenDestroyed()
    {
        ScriptedServer server;
        server.answerAll(ScriptedAnswer::hang());
        start({{u"URL"_s, server.url()}});
        QVERIFY(server.waitForRequests(1));
        download.reset();
        QVERIFY(server.waitForOpenConnections(0));
        QTest::qWait(20);
        QVERIFY(ends.isEmpty());
    }

    void opensHandles()
    {
        const QList<int> access{O_RDONLY, O_WRONLY, O_RDWR, O_RDWR, O_RDONLY};
        for (int behavior = 0; behavior < access.size(); ++behavior) {
            const auto handle = QBFileHandle::fileHandleWithPath(path, behavior);
            QVERIFY(handle && handle->fileHandle().isOpen());
            QCOMPARE(::fcntl(handle->fileHandle().get(), F_GETFL) & O_ACCMODE, access.at(behavior));
        }
        QVERIFY(!QBFileHandle::initWithPath(path + u"missing"_s, QBFileHandle::Update));
        QVERIFY(!QBFileHandle::initWithPath(folder->path(), QBFileHandle::WriteOnly));
    }

private:
    void start(const QBFileDownloader::Information &description)
    {
        download->downloadWithInfomation(description, [this](const QBError &error) { ends.append(error); });
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    HttpTransport transport;
    std::unique_ptr<QBFileDownloader> download;
    QList<QBError> ends;
};

REGISTER_TEST(TestFileDownloader)
#include "TestFileDownloader.moc"
