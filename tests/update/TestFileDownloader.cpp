#include "support/LogRecorder.h"
#include "support/ScriptedServer.h"
#include "support/StreamServer.h"
#include "support/TestMain.h"
#include "update/QBFileDownloader.h"
#include "update/QBFileHandle.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;
using testing::ScriptedServer;

namespace
{

struct Destination : QBDownloadFile {
    explicit Destination(const QString &file) : path(file) {}
    QString backupPath() const override { return path; }
    const QString path;
};

/// How a download ended.
struct Ends {
    QList<QBError> errors;
    QBFileDownloader::CompleteHandle handle()
    {
        return [this](const QBError &error) { errors.append(error); };
    }
    bool failed() const { return errors.size() == 1 && errors.first().code() == 404444; }
};

} // namespace

class TestFileDownloader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void fillsTheFile_data();
    void fillsTheFile();
    void dropsWhatHasNoFile();
    void sendsTheDescription();
    void refusesHostileDescriptions_data();
    void refusesHostileDescriptions();
    void tellsFailures();
    void letsOnlyTheLatestWrite();
    void endsSilentlyWhenDestroyed();
    void opensHandles();

private:
    void put(const QByteArray &content) const;
    QByteArray content() const;
    std::unique_ptr<QBFileDownloader> downloader();

    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<HttpTransport> transport = std::make_unique<HttpTransport>();
};

void TestFileDownloader::init()
{
    folder = std::make_unique<QTemporaryDir>();
    path = folder->filePath(u"file"_s);
    put("old content");
}

void TestFileDownloader::put(const QByteArray &content) const
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QByteArray TestFileDownloader::content() const
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::unique_ptr<QBFileDownloader> TestFileDownloader::downloader()
{
    return std::make_unique<QBFileDownloader>(std::make_shared<Destination>(path), *transport);
}

void TestFileDownloader::fillsTheFile_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("longer") << 200 << QByteArray(100'000, 'n') << QByteArray(100'000, 'n');
    QTest::newRow("shorter keeps the tail") << 200 << "NEW"_ba
                                            << "NEW content"_ba;
    QTest::newRow("nothing") << 200 << ""_ba
                             << "old content"_ba;
    QTest::newRow("error page") << 404 << "gone"_ba
                                << "gonecontent"_ba;
}

void TestFileDownloader::fillsTheFile()
{
    QFETCH(const int, status);
    QFETCH(const QByteArray, body);
    QFETCH(const QByteArray, expected);
    ScriptedServer server;
    server.expect("GET /a?b=c ", ScriptedAnswer::reply(body, status));
    Ends ends;
    const auto download = downloader();
    download->downloadWithInfomation({{u"URL"_s, server.url(u"/a?b=c"_s)}, {u"Method"_s, u"GET"_s}}, ends.handle());
    QTRY_COMPARE(ends.errors.size(), 1);
    QVERIFY(!ends.errors.first());
    QCOMPARE(content(), expected);
    QCOMPARE(server.complaint(), QString());
}

void TestFileDownloader::dropsWhatHasNoFile()
{
    QVERIFY(QFile::remove(path));
    const testing::LogRecorder log;
    ScriptedServer server;
    server.expect("GET / ", ScriptedAnswer::reply("NEW"));
    Ends ends;
    const auto download = downloader();
    download->downloadWithInfomation({{u"URL"_s, server.url()}}, ends.handle());
    QTRY_COMPARE(ends.errors.size(), 1);
    QVERIFY(!ends.errors.first());
    QVERIFY(!QFile::exists(path));
    QVERIFY(log.contains(u"ERROR: fileHandleForUpdatingAtPath "_s + path));
}

void TestFileDownloader::sendsTheDescription()
{
    ScriptedServer server;
    server.expect("PUT / ", ScriptedAnswer::reply("ok"));
    Ends ends;
    const auto download = downloader();
    download->downloadWithInfomation({{u"URL"_s, server.url()},
                                      {u"Method"_s, u"PUT"_s},
                                      {u"X-Kind"_s, u"报告; a=\"b\""_s},
                                      {u"Content-Length"_s, u"5000"_s},
                                      {u"Transfer-Encoding"_s, u"chunked"_s}},
                                     ends.handle());
    QTRY_COMPARE(ends.errors.size(), 1);
    QVERIFY(!ends.errors.first());
    const QByteArray request = server.requests().value(0);
    QVERIFY(request.contains("\r\nX-Kind: 报告; a=\"b\"\r\n"));
    QVERIFY(!request.contains("5000") && !request.contains("chunked") && !request.contains("Range"));
}

void TestFileDownloader::refusesHostileDescriptions_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("line break in a value") << u"X-A"_s << u"1\r\nX-B: 2"_s;
    QTest::newRow("null character") << u"X-A"_s << u"1"_s + QChar(u'\0') + u"2"_s;
    QTest::newRow("line break in a name") << u"X-A: 1\r\nX-B"_s << u"2"_s;
    QTest::newRow("no name") << u""_s << u"2"_s;
    QTest::newRow("huge") << u"X-A"_s << QString(100'000, u'a');
    QTest::newRow("method with a line break") << u"Method"_s << u"GET / HTTP/1.1\r\nX-B: 2\r\n\r\nGET"_s;
    QTest::newRow("file address") << u"URL"_s << u"file:///etc/passwd"_s;
    QTest::newRow("address with a line break") << u"URL"_s << u"http://127.0.0.1:1/\r\nX-B: 2"_s;
}

void TestFileDownloader::refusesHostileDescriptions()
{
    QFETCH(const QString, key);
    QFETCH(const QString, value);
    ScriptedServer server;
    Ends ends;
    const auto download = downloader();
    QBFileDownloader::Information description{{u"URL"_s, server.url()}, {u"Method"_s, u"GET"_s}};
    description.insert(key, value);
    download->downloadWithInfomation(description, ends.handle());
    QVERIFY2(ends.errors.isEmpty(), "told later, never inside the call");
    QTRY_COMPARE(ends.errors.size(), 1);
    QVERIFY(ends.failed());
    QCOMPARE(ends.errors.first().domain(), QBError::serverDomain());
    QVERIFY(ends.errors.first().userInfo().isEmpty());
    QCOMPARE(content(), "old content"_ba);
    QCOMPARE(server.complaint(), QString());
}

void TestFileDownloader::tellsFailures()
{
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nNEW"));
    Ends ends;
    const auto download = downloader();
    download->downloadWithInfomation({{u"URL"_s, server.url()}}, ends.handle());
    QTRY_COMPARE(ends.errors.size(), 1);
    QVERIFY(ends.failed());
}

void TestFileDownloader::letsOnlyTheLatestWrite()
{
    testing::StreamServer slow({.head = "HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n",
                                .zeros = 1'000'000,
                                .pause = std::chrono::milliseconds(5),
                                .chunk = 1000});
    ScriptedServer server;
    server.expect("GET / ", ScriptedAnswer::reply("NEW"));
    Ends first;
    Ends second;
    const auto download = downloader();
    download->downloadWithInfomation({{u"URL"_s, u"http://127.0.0.1:%1/"_s.arg(slow.port())}}, first.handle());
    QVERIFY(slow.waitForTraffic(5'000));
    QTRY_COMPARE(content().left(1), QByteArray(1, '\0'));
    download->downloadWithInfomation({{u"URL"_s, server.url()}}, second.handle());
    QVERIFY(first.failed());
    QTRY_COMPARE(second.errors.size(), 1);
    QVERIFY(!second.errors.first());
    const QByteArray kept = content();
    QVERIFY(kept.startsWith("NEW"));
    QTest::qWait(50);
    QCOMPARE(content(), kept);
    QCOMPARE(first.errors.size(), 1);
}

void TestFileDownloader::endsSilentlyWhenDestroyed()
{
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::hang());
    Ends ends;
    auto download = downloader();
    download->downloadWithInfomation({{u"URL"_s, server.url()}}, ends.handle());
    QVERIFY(server.waitForRequests(1));
    download.reset();
    QVERIFY(server.waitForOpenConnections(0));
    QTest::qWait(20);
    QVERIFY(ends.errors.isEmpty());
}

void TestFileDownloader::opensHandles()
{
    const QList<int> access{O_RDONLY, O_WRONLY, O_RDWR, O_RDWR, O_RDONLY};
    for (int behavior = 0; behavior < access.size(); ++behavior) {
        const auto handle = QBFileHandle::fileHandleWithPath(path, behavior);
        QVERIFY(handle && handle->fileHandle().isOpen());
        QCOMPARE(::fcntl(handle->fileHandle().get(), F_GETFL) & O_ACCMODE, access.at(behavior));
        QVERIFY(handle->dstPath() == path && handle->behavior() == behavior && !handle->written);
    }
    QVERIFY(!QBFileHandle::initWithPath(path + u"missing"_s, QBFileHandle::Update));
    QVERIFY(!QBFileHandle::initWithPath(folder->path(), QBFileHandle::WriteOnly));
}

REGISTER_TEST(TestFileDownloader)
#include "TestFileDownloader.moc"
