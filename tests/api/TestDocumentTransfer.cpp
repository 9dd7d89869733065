#include "ApiClient.h"
#include "TransferEnds.h"

#include "api/DocumentTransfer.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTest>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace Qt::StringLiterals;

namespace
{

const QByteArray record = R"({"docid":"qb://A/1","name":"a","rev":"r2"})";

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(7);
    for (char &byte : bytes)
        byte = static_cast<char>(generator.bounded(256));
    return bytes;
}

QByteArray boundaryIn(const QByteArray &request)
{
    const QByteArray start = "\r\nContent-Type: multipart/form-data;boundary=";
    const qsizetype at = request.indexOf(start);
    return at < 0 ? QByteArray() : request.mid(at + start.size(), 16);
}

QByteArray framed(const QByteArray &boundary, const QByteArray &json, const QByteArray &contents)
{
    return "--" + boundary + "\r\n\r\n" + json + "\r\n--" + boundary + "\r\n\r\n" + contents + "\r\n--" + boundary +
           "--";
}

ScriptedAnswer document(const QByteArray &json, const QByteArray &contents)
{
    return ScriptedAnswer::reply(framed("XyZ", json, contents), 200,
                                 "Content-Type: multipart/form-data;boundary=XyZ\r\n");
}

ScriptedAnswer bytes(const QByteArray &contents, const QByteArray &headers = {})
{
    return ScriptedAnswer::reply(contents, 200, "Content-Type: application/octet-stream\r\n" + headers);
}

using Upload = std::function<ServerReply(QBNetworking &, QBError *)>;

} // namespace
Q_DECLARE_METATYPE(Upload)
Q_DECLARE_METATYPE(ScriptedAnswer)

class TestDocumentTransfer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesUploads_data();
    void framesUploads();
    void uploadsFromAFile();
    void sendsAnUploadAgainAfterARedirect();
    void sendsAnUploadAgainOnADeadConnection();
    void passesUploadRefusalsOn();
    void readsRanges_data();
    void readsRanges();
    void readsIntoTheCallersBuffer();
    void pinsARevision();
    void downloads_data();
    void downloads();
    void downloadsInDrops();
};

void TestDocumentTransfer::framesUploads_data()
{
    QTest::addColumn<Upload>("upload");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("contents");
    const QByteArray odd = "a\r\n\0b--"_ba;
    QTest::newRow("new empty file") << Upload([](QBNetworking &n, QBError *e) {
        return n.requestCreateFileWithParentDocID(u"qb://A"_s, u"é\"\n.txt"_s, e);
    }) << R"({"docid":"qb://A","length":0,"name":"é\"\n.txt","ondup":3})"_ba
                                    << ""_ba;
    QTest::newRow("new contents") << Upload([odd](QBNetworking &n, QBError *e) {
        return n.requestUploadFileWithDocID(u"qb://A/1"_s, odd, e);
    }) << R"({"docid":"qb://A/1","length":7,"ondup":3})"_ba
                                  << odd;
    QTest::newRow("no contents") << Upload([](QBNetworking &n, QBError *e) {
        return n.requestUploadFileWithDocID(u"qb://A/1"_s, {}, e);
    }) << R"({"docid":"qb://A/1","length":0,"ondup":3})"_ba
                                 << ""_ba;
    QTest::newRow("new file with contents and rule") << Upload([odd](QBNetworking &n, QBError *e) {
        MemorySource source(odd);
        return DocumentTransfer(n).createFile(u"qb://A"_s, u"b"_s, source, e, DocumentTransfer::TakeFreeName, 5);
    }) << R"({"client_mtime":5,"docid":"qb://A","length":7,"name":"b","ondup":2})"_ba
                                                     << odd;
    QTest::newRow("eight megabytes") << Upload([](QBNetworking &n, QBError *e) {
        MemorySource source(randomBytes(8 << 20));
        return DocumentTransfer(n).uploadFile(u"d"_s, source, e, 1795000000000001);
    }) << R"({"client_mtime":1795000000000001,"docid":"d","length":8388608,"ondup":3})"_ba
                                     << randomBytes(8 << 20);
}

void TestDocumentTransfer::framesUploads()
{
    QFETCH(const Upload, upload);
    QFETCH(const QByteArray, json);
    QFETCH(const QByteArray, contents);
    ScriptedServer server;
    ApiClient client(server, std::chrono::seconds(10));
    client.signIn();
    for (int i = 0; i < 2; ++i)
        server.expect("POST /api/v1/file?method=upload&tokenid=t1 HTTP/1.1\r\n", ScriptedAnswer::json(record));
    for (int i = 0; i < 2; ++i) {
        QBError error;
        const ServerReply reply = upload(client.networking, &error);
        QVERIFY2(!error, qPrintable(error.localizedDescription()));
        QCOMPARE(reply->value(u"rev"_s).toString(), u"r2"_s);
        const QByteArray boundary = boundaryIn(server.requests().last());
        QCOMPARE(boundary.size(), 16);
        QVERIFY2(server.bodies().last() == framed(boundary, json, contents), "the framing, byte for byte");
    }
    QVERIFY2(boundaryIn(server.requests().first()) != boundaryIn(server.requests().last()), "a new one each time");
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::uploadsFromAFile()
{
    const QByteArray contents = randomBytes(300'000);
    ScriptedServer server;
    ApiClient client(server);
    const QString path = client.folder.filePath(u"upload"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write(contents) == contents.size() && file.flush());
    server.expect("POST ", ScriptedAnswer::json(record)).expect("POST ", ScriptedAnswer::json(record));
    QBError error;
    for (const qint64 length : {contents.size(), qsizetype(1000)}) {
        FileSource source(file.handle(), length);
        QVERIFY(DocumentTransfer(client.networking).uploadFile(u"d"_s, source, &error));
        QVERIFY(server.bodies().last().contains("\r\n\r\n" + contents.left(length) + "\r\n--"));
    }
    // The file is shorter than it was said to be.
    FileSource shortened(file.handle(), contents.size() + 1);
    QVERIFY(!DocumentTransfer(client.networking).uploadFile(u"d"_s, shortened, &error));
    QCOMPARE(error.code(), static_cast<qint64>(TransportError::BodyUnreadable));
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::sendsAnUploadAgainAfterARedirect()
{
    const QByteArray contents = randomBytes(500'000);
    for (const int status : {302, 307}) {
        ScriptedServer server;
        ApiClient client(server);
        server.expect("POST /api/v1/file", ScriptedAnswer::redirect(server.url(u"/elsewhere"_s), status))
            .expect("POST /elsewhere ", ScriptedAnswer::json(record));
        MemorySource source(contents);
        QBError error;
        QVERIFY(DocumentTransfer(client.networking).uploadFile(u"d"_s, source, &error));
        QCOMPARE(server.bodies().size(), 2);
        QVERIFY(server.bodies().first() == server.bodies().last());
        QVERIFY(server.bodies().last().contains(contents));
        QCOMPARE(server.complaint(), QString());
    }
}

void TestDocumentTransfer::sendsAnUploadAgainOnADeadConnection()
{
    const QByteArray contents = randomBytes(500'000);
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", ScriptedAnswer::json("{}"))
        .expect("POST ", ScriptedAnswer::raw(""))
        .expect("POST ", ScriptedAnswer::json(record));
    client.networking.getFileAttribute(u"d"_s);
    MemorySource source(contents);
    QBError error;
    QVERIFY(DocumentTransfer(client.networking).uploadFile(u"d"_s, source, &error));
    QVERIFY(server.bodies().at(1) == server.bodies().at(2));
    QVERIFY(server.bodies().at(2).contains(contents));
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::passesUploadRefusalsOn()
{
    ScriptedServer server;
    ApiClient client(server);
    const QByteArray refusal = R"J({"errcode":403031,"errmsg":"no","causemsg":"locked by Bob(b)"})J";
    server.expect("POST ", ScriptedAnswer::json(refusal, 403)).expect("POST ", ScriptedAnswer::json(refusal));
    for (const QByteArray &odd : {""_ba, "[]"_ba, "<html>"_ba})
        server.expect("POST ", ScriptedAnswer::json(odd));
    for (const qint64 code : {403031, 403031, -1011, -1011, -1011}) {
        QBError error;
        QVERIFY(!client.networking.requestUploadFileWithDocID(u"d"_s, "x", &error));
        QCOMPARE(error.code(), code);
        QCOMPARE(error.lockUser(), code > 0 ? u"Bob"_s : QString());
    }
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::readsRanges_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<int>("code");
    const auto octets = "Content-Type: application/octet-stream\r\n"_ba;
    const auto refusal = R"({"errcode":404006,"errmsg":"gone"})"_ba;
    QTest::newRow("all") << bytes("0123456789") << "0123456789"_ba << 0;
    QTest::newRow("to the end") << bytes("0123") << "0123"_ba << 0;
    QTest::newRow("past the end") << bytes("") << ""_ba << 0;
    QTest::newRow("contents like an error") << bytes(refusal.left(10)) << refusal.left(10) << 0;
    QTest::newRow("without a type") << ScriptedAnswer::reply("0123456789") << "0123456789"_ba << 0;
    QTest::newRow("partial content") << ScriptedAnswer::reply("01", 206, octets) << "01"_ba << 0;
    QTest::newRow("at the end by size") << bytes("01", "X-Total-Size: 7\r\n") << "01"_ba << 0;
    QTest::newRow("odd size") << bytes("01", "X-Total-Size: many\r\n") << "01"_ba << 0;
    QTest::newRow("short") << bytes("01", "X-Total-Size: 8\r\n") << QByteArray() << -1011;
    QTest::newRow("too much") << bytes("0123456789A") << QByteArray() << -1011;
    QTest::newRow("cut") << ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n" + octets + "Content-Length: 10\r\n\r\n0123")
                         << QByteArray() << -1005;
    QTest::newRow("refused") << ScriptedAnswer::json(refusal, 404) << QByteArray() << 404006;
    QTest::newRow("refused kindly") << ScriptedAnswer::json(refusal) << QByteArray() << 404006;
    QTest::newRow("refused as bytes") << ScriptedAnswer::reply(refusal, 404, octets) << QByteArray() << 404006;
    QTest::newRow("HTTP error") << ScriptedAnswer::reply("0123", 500, octets) << QByteArray() << -1011;
    QTest::newRow("no reply to speak of") << ScriptedAnswer::reply("", 304) << QByteArray() << -1011;
    QTest::newRow("JSON instead") << ScriptedAnswer::json("{}") << QByteArray() << -1011;
}

void TestDocumentTransfer::readsRanges()
{
    QFETCH(const ScriptedAnswer, answer);
    QFETCH(const QByteArray, expected);
    QFETCH(const int, code);
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    server.expect("POST /api/v1/file?method=read&tokenid=t1 HTTP/1.1\r\n", answer);
    QBError error;
    const QByteArray read = client.networking.requestFileDataWithDocID(u"d"_s, 10, 5, &error);
    QCOMPARE(error.code(), code);
    QCOMPARE(read, expected);
    QCOMPARE(read.isNull(), expected.isNull());
    QCOMPARE(server.bodies().first(), R"({"docid":"d","length":10,"offset":5})"_ba);
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::readsIntoTheCallersBuffer()
{
    const QByteArray contents = randomBytes(3'000'000);
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", bytes(contents, "ETag: r9\r\nX-Total-Size: 5000000000\r\n"))
        .expect("POST ", bytes("abc", "etag: W/\"r 10\"\r\nx-total-size: 3\r\n"))
        .expect("POST ", bytes("abc"));
    DocumentTransfer transfer(client.networking);
    QByteArray buffer(contents.size() + 2, '#');
    QBError error;
    const auto large = transfer.readRange(u"d"_s, 4'000'000'000, contents.size(), buffer.data() + 1, &error);
    QVERIFY(large && !error);
    QCOMPARE(large->bytes, contents.size());
    QCOMPARE(large->rev, u"r9"_s);
    QCOMPARE(large->totalSize, 5'000'000'000);
    QVERIFY2(buffer == "#" + contents + "#", "nothing beside the range");
    QCOMPARE(server.bodies().first(), R"({"docid":"d","length":3000000,"offset":4000000000})"_ba);

    const auto quoted = transfer.readRange(u"d"_s, 0, 10, buffer.data(), &error);
    QCOMPARE(quoted->rev, u"r 10"_s);
    QCOMPARE(quoted->totalSize, 3);
    const auto untold = transfer.readRange(u"d"_s, 0, 10, buffer.data(), &error);
    QVERIFY(untold->rev.isNull());
    QCOMPARE(untold->totalSize, -1);
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::pinsARevision()
{
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", bytes("abc", "ETag: r1\r\n"))
        .expect("POST ", bytes("abc", "ETag: r2\r\n"))
        .expect("POST ", document("{}", "abc"));
    DocumentTransfer transfer(client.networking);
    QByteArray buffer(3, '#');
    QBError error;
    QVERIFY(transfer.readRange(u"d"_s, 0, 3, buffer.data(), &error, u"r1"_s));
    QCOMPARE(server.bodies().first(), R"({"docid":"d","length":3,"offset":0,"rev":"r1"})"_ba);
    QVERIFY2(!transfer.readRange(u"d"_s, 0, 3, buffer.data(), &error, u"r1"_s), "bytes of another revision");
    QCOMPARE(error.code(), static_cast<qint64>(TransportError::BadReply));
    CountingSink sink;
    QVERIFY(transfer.downloadFile(u"d"_s, sink, &error, u"r1"_s));
    QCOMPARE(server.bodies().last(), R"({"docid":"d","rev":"r1","sn":0})"_ba);
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::downloads_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<int>("code");
    const auto multipart = "Content-Type: multipart/form-data;boundary=XyZ\r\n"_ba;
    const auto refusal = R"({"errcode":404006,"errmsg":"gone"})"_ba;
    const auto row = [](const char *name, const ScriptedAnswer &answer, const QByteArray &expected, int code) {
        QTest::newRow(name) << answer << expected << code;
    };
    row("whole", document(record, "contents"), "contents", 0);
    row("empty", document(record, ""), "", 0);
    row("tricky", document(R"({"size":12})", "\r\n--Xy\r\n--"), {}, -1005);
    row("right size", document(R"({"size":10})", "\r\n--Xy\r\n--"), "\r\n--Xy\r\n--", 0);
    row("a million", document(record, randomBytes(900'000)), randomBytes(900'000), 0);
    row("size differs", document(R"({"size":9})", "contents"), {}, -1005);
    row("no record", document("[]", "contents"), {}, -1011);
    row("error as record", document(refusal, ""), {}, 404006);
    row("refused", ScriptedAnswer::json(refusal, 404), {}, 404006);
    row("refused kindly", ScriptedAnswer::json(refusal), {}, 404006);
    row("no multipart", bytes("contents"), {}, -1011);
    row("nothing", ScriptedAnswer::reply("", 200, multipart), {}, -1011);
    row("no boundary", ScriptedAnswer::reply("--\r\n\r\n", 200, "Content-Type: multipart/form-data\r\n"), {}, -1011);
    row("wrong boundary", ScriptedAnswer::reply(framed("Other", "{}", "c"), 200, multipart), {}, -1005);
    row("HTTP error", ScriptedAnswer::reply(framed("XyZ", "{}", "c"), 500, multipart), {}, -1011);
    const QByteArray whole = framed("XyZ", record, "contents");
    row("cut by length", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n" + multipart + "Content-Length: 999\r\n\r\n" + whole),
        {}, -1005);
    for (const qsizetype missing : {1, 2, 6, 14, 30})
        row(qPrintable(u"cut %1 before the end"_s.arg(missing)),
            ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n" + multipart + "\r\n" + whole.chopped(missing)), {}, -1005);
}

void TestDocumentTransfer::downloads()
{
    QFETCH(const ScriptedAnswer, answer);
    QFETCH(const QByteArray, expected);
    QFETCH(const int, code);
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    server.expect("POST /api/v1/file?method=download&tokenid=t1 HTTP/1.1\r\n", answer);
    QBError error;
    qint64 totalSize = -7;
    const QByteArray contents = client.networking.requestFileDataWithDocID(u"d"_s, &totalSize, &error);
    QCOMPARE(error.code(), code);
    QVERIFY(contents == expected);
    QCOMPARE(contents.isNull(), code != 0);
    QCOMPARE(totalSize, code == 0 ? expected.size() : -7);
    QCOMPARE(server.bodies().first(), R"({"docid":"d","sn":0})"_ba);
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentTransfer::downloadsInDrops()
{
    ScriptedServer server;
    ApiClient client(server, std::chrono::seconds(10));
    ScriptedAnswer drops = document(record, "con\r\n--Xtents");
    drops.drip = std::chrono::milliseconds(1);
    server.expect("POST ", drops);
    CountingSink sink;
    QBError error;
    const ServerReply reply = DocumentTransfer(client.networking).downloadFile(u"d"_s, sink, &error);
    QVERIFY(reply && !error);
    QCOMPARE(reply->value(u"rev"_s).toString(), u"r2"_s);
    QCOMPARE(sink.kept, "con\r\n--Xtents"_ba);
    QCOMPARE(server.complaint(), QString());
}

REGISTER_TEST(TestDocumentTransfer)
#include "TestDocumentTransfer.moc"
