#include "ApiScene.h"
#include "TransferEnds.h"

#include "api/DocumentTransfer.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QRandomGenerator>

using testing::ScriptedAnswer;
using namespace Qt::StringLiterals;

namespace
{

const QByteArray record = R"({"docid":"qb://A/1","name":"a","rev":"r2"})";
const QByteArray refusal = R"({"errcode":404006,"errmsg":"gone"})";
const QByteArray lockRefusal = R"J({"errcode":403031,"errmsg":"no","causemsg":"locked by Bob(b)"})J";
const QByteArray octets = "Content-Type: application/octet-stream\r\n";
const QByteArray multipart = "Content-Type: multipart/form-data;boundary=XyZ\r\n";
const QByteArray oddBytes("a\r\n\0b--", 7);

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
    return ScriptedAnswer::reply(framed("XyZ", json, contents), 200, multipart);
}

ScriptedAnswer bytes(const QByteArray &contents, const QByteArray &headers = {})
{
    return ScriptedAnswer::reply(contents, 200, octets + headers);
}

ScriptedAnswer cut(const QByteArray &headers, const QByteArray &body)
{
    return ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n" + headers + "\r\n" + body);
}

using Upload = std::function<ServerReply(QBNetworking &, QBError *)>;

} // namespace
Q_DECLARE_METATYPE(Upload)
Q_DECLARE_METATYPE(ScriptedAnswer)

class TestDocumentTransfer : public ApiScene
{
    Q_OBJECT

private Q_SLOTS:
    void init() { open(std::chrono::seconds(10)); }
    void cleanup() { close(); }

    void framesUploads_data();
    void framesUploads()
    {
        QFETCH(const Upload, upload);
        QFETCH(const QByteArray, json);
        QFETCH(const QByteArray, contents);
        client->signIn();
        for (int i = 0; i < 2; ++i) {
            expect("POST /api/v1/file?method=upload&tokenid=t1 HTTP/1.1\r\n", record);
            QBError error;
            const ServerReply reply = upload(networking(), &error);
            QVERIFY2(!error, qPrintable(error.localizedDescription()));
            QCOMPARE(reply->value(u"rev"_s).toString(), u"r2"_s);
            const QByteArray boundary = boundaryIn(server->requests().last());
            QCOMPARE(boundary.size(), 16);
            QVERIFY2(server->bodies().last() == framed(boundary, json, contents), "the framing, byte for byte");
        }
        QVERIFY2(boundaryIn(server->requests().first()) != boundaryIn(server->requests().last()), "new each time");
    }

    void uploadsFromAFile()
    {
        const QByteArray contents = randomBytes(300'000);
        QFile file(client->folder.filePath(u"upload"_s));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.write(contents) == contents.size() && file.flush());
        answer({record, record});
        QBError error;
        for (const qint64 length : {contents.size(), qsizetype(1000)}) {
            FileSource source(file.handle(), length);
            QVERIFY(DocumentTransfer(networking()).uploadFile(u"d"_s, source, &error));
            QVERIFY(server->bodies().last().contains("\r\n\r\n" + contents.left(length) + "\r\n--"));
        }
        // The file is shorter than it was said to be.
        FileSource shortened(file.handle(), contents.size() + 1);
        QVERIFY(!DocumentTransfer(networking()).uploadFile(u"d"_s, shortened, &error));
        QCOMPARE(error.code(), static_cast<qint64>(TransportError::BodyUnreadable));
    }

    /// The whole body, after a redirect or on a connection that turns out to be dead.
    void sendsAnUploadAgain()
    {
        const QByteArray contents = randomBytes(500'000);
        for (const int redirect : {302, 307, 0}) {
            open();
            if (redirect == 0) {
                answer({"{}"});
                networking().getFileAttribute(u"d"_s);
                server->expect("POST ", Answer::raw(""));
                answer({record});
            } else {
                server->expect("POST /api/v1/file", Answer::redirect(server->url(u"/elsewhere"_s), redirect));
                expect("POST /elsewhere ", record);
            }
            MemorySource source(contents);
            QBError error;
            QVERIFY(DocumentTransfer(networking()).uploadFile(u"d"_s, source, &error));
            const QByteArrayList bodies = server->bodies();
            QVERIFY(bodies.last().contains(contents));
            QVERIFY(bodies.at(bodies.size() - 2) == bodies.last());
            QCOMPARE(server->complaint(), QString());
        }
    }

    void passesUploadRefusalsOn()
    {
        server->expect("POST ", Answer::json(lockRefusal, 403));
        answer({lockRefusal, "", "[]", "<html>"});
        for (const qint64 code : {403031, 403031, -1011, -1011, -1011}) {
            QBError error;
            QVERIFY(!networking().requestUploadFileWithDocID(u"d"_s, "x", &error));
            QCOMPARE(error.code(), code);
            QCOMPARE(error.lockUser(), code > 0 ? u"Bob"_s : QString());
        }
    }

    void readsRanges_data()
    {
        const testing::Rows<ScriptedAnswer, QByteArray, int> row("answer", "expected", "code");
        row("all", bytes("0123456789"), "0123456789", 0);
        row("to the end", bytes("0123"), "0123", 0);
        row("past the end", bytes(""), "", 0);
        row("contents like an error", bytes(refusal.left(10)), refusal.left(10), 0);
        row("without a type", Answer::reply("0123456789"), "0123456789", 0);
        row("partial content", Answer::reply("01", 206, octets), "01", 0);
        row("at the end by size", bytes("01", "X-Total-Size: 7\r\n"), "01", 0);
        row("odd size", bytes("01", "X-Total-Size: many\r\n"), "01", 0);
        row("short", bytes("01", "X-Total-Size: 8\r\n"), {}, -1011);
        row("too much", bytes("0123456789A"), {}, -1011);
        row("cut", cut(octets + "Content-Length: 10\r\n", "0123"), {}, -1005);
        row("refused", Answer::json(refusal, 404), {}, 404006);
        row("refused kindly", Answer::json(refusal), {}, 404006);
        row("refused as bytes", Answer::reply(refusal, 404, octets), {}, 404006);
        row("HTTP error", Answer::reply("0123", 500, octets), {}, -1011);
        row("no reply to speak of", Answer::reply("", 304), {}, -1011);
        row("JSON instead", Answer::json("{}"), {}, -1011);
    }
    void readsRanges()
    {
        QFETCH(const ScriptedAnswer, answer);
        QFETCH(const QByteArray, expected);
        client->signIn();
        server->expect("POST /api/v1/file?method=read&tokenid=t1 HTTP/1.1\r\n", answer);
        QBError error;
        const QByteArray read = networking().requestFileDataWithDocID(u"d"_s, 10, 5, &error);
        QTEST(static_cast<int>(error.code()), "code");
        QCOMPARE(read, expected);
        QCOMPARE(read.isNull(), expected.isNull());
        QCOMPARE(server->bodies().first(), "{\"docid\":\"d\",\"length\":10,\"offset\":5}"_ba);
    }

    void readsIntoTheCallersBuffer()
    {
        const QByteArray contents = randomBytes(3'000'000);
        server->expect("POST ", bytes(contents, "ETag: r9\r\nX-Total-Size: 5000000000\r\n"))
            .expect("POST ", bytes("abc", "etag: W/\"r 10\"\r\nx-total-size: 3\r\n"))
            .expect("POST ", bytes("abc"));
        DocumentTransfer transfer(networking());
        QByteArray buffer(contents.size() + 2, '#');
        QBError error;
        const auto large = transfer.readRange(u"d"_s, 4'000'000'000, contents.size(), buffer.data() + 1, &error);
        QVERIFY(large && !error);
        QCOMPARE(large->bytes, contents.size());
        QCOMPARE(large->rev, u"r9"_s);
        QCOMPARE(large->totalSize, 5'000'000'000);
        QVERIFY2(buffer == "#" + contents + "#", "nothing beside the range");
        QCOMPARE(server->bodies().first(), "{\"docid\":\"d\",\"length\":3000000,\"offset\":4000000000}"_ba);

        const auto quoted = transfer.readRange(u"d"_s, 0, 10, buffer.data(), &error);
        QCOMPARE(quoted->rev, u"r 10"_s);
        QCOMPARE(quoted->totalSize, 3);
        const auto untold = transfer.readRange(u"d"_s, 0, 10, buffer.data(), &error);
        QVERIFY(untold->rev.isNull());
        QCOMPARE(untold->totalSize, -1);
    }

    void pinsARevision()
    {
        server->expect("POST ", bytes("abc", "ETag: r1\r\n"))
            .expect("POST ", bytes("abc", "ETag: r2\r\n"))
            .expect("POST ", document("{}", "abc"));
        DocumentTransfer transfer(networking());
        QByteArray buffer(3, '#');
        QBError error;
        QVERIFY(transfer.readRange(u"d"_s, 0, 3, buffer.data(), &error, u"r1"_s));
        QCOMPARE(server->bodies().first(), "{\"docid\":\"d\",\"length\":3,\"offset\":0,\"rev\":\"r1\"}"_ba);
        QVERIFY2(!transfer.readRange(u"d"_s, 0, 3, buffer.data(), &error, u"r1"_s), "bytes of another revision");
        QCOMPARE(error.code(), static_cast<qint64>(TransportError::BadReply));
        CountingSink sink;
        QVERIFY(transfer.downloadFile(u"d"_s, sink, &error, u"r1"_s));
        QCOMPARE(server->bodies().last(), "{\"docid\":\"d\",\"rev\":\"r1\",\"sn\":0}"_ba);
    }

    void downloads_data()
    {
        const testing::Rows<ScriptedAnswer, QByteArray, int> row("answer", "expected", "code");
        const QByteArray whole = framed("XyZ", record, "contents");
        row("whole", document(record, "contents"), "contents", 0);
        row("empty", document(record, ""), "", 0);
        row("tricky", document("{\"size\":12}", "\r\n--Xy\r\n--"), {}, -1005);
        row("right size", document("{\"size\":10}", "\r\n--Xy\r\n--"), "\r\n--Xy\r\n--", 0);
        row("a million", document(record, randomBytes(900'000)), randomBytes(900'000), 0);
        row("size differs", document("{\"size\":9}", "contents"), {}, -1005);
        row("no record", document("[]", "contents"), {}, -1011);
        row("error as record", document(refusal, ""), {}, 404006);
        row("refused", Answer::json(refusal, 404), {}, 404006);
        row("refused kindly", Answer::json(refusal), {}, 404006);
        row("no multipart", bytes("contents"), {}, -1011);
        row("nothing", Answer::reply("", 200, multipart), {}, -1011);
        row("no boundary", Answer::reply("--\r\n\r\n", 200, "Content-Type: multipart/form-data\r\n"), {}, -1011);
        row("wrong boundary", Answer::reply(framed("Other", "{}", "c"), 200, multipart), {}, -1005);
        row("HTTP error", Answer::reply(framed("XyZ", "{}", "c"), 500, multipart), {}, -1011);
        row("cut by length", cut(multipart + "Content-Length: 999\r\n", whole), {}, -1005);
        for (const qsizetype missing : {1, 2, 6, 14, 30})
            row(qPrintable(u"cut %1 before the end"_s.arg(missing)), cut(multipart, whole.chopped(missing)), {}, -1005);
    }
    void downloads()
    {
        QFETCH(const ScriptedAnswer, answer);
        QFETCH(const QByteArray, expected);
        QFETCH(const int, code);
        client->signIn();
        server->expect("POST /api/v1/file?method=download&tokenid=t1 HTTP/1.1\r\n", answer);
        QBError error;
        qint64 totalSize = -7;
        const QByteArray contents = networking().requestFileDataWithDocID(u"d"_s, &totalSize, &error);
        QCOMPARE(error.code(), code);
        QVERIFY(contents == expected);
        QCOMPARE(contents.isNull(), code != 0);
        QCOMPARE(totalSize, code == 0 ? expected.size() : -7);
        QCOMPARE(server->bodies().first(), "{\"docid\":\"d\",\"sn\":0}"_ba);
    }
};

void TestDocumentTransfer::framesUploads_data()
{
    const testing::Rows<QByteArray, QByteArray, Upload> row("json", "contents", "upload");
    using N = QBNetworking;
    row("new empty file", R"({"docid":"qb://A","length":0,"name":"é\"\n.txt","ondup":3})", "",
        [](N &n, QBError *e) { return n.requestCreateFileWithParentDocID(u"qb://A"_s, u"é\"\n.txt"_s, e); });
    row("new contents", R"({"docid":"qb://A/1","length":7,"ondup":3})", oddBytes,
        [](N &n, QBError *e) { return n.requestUploadFileWithDocID(u"qb://A/1"_s, oddBytes, e); });
    row("no contents", R"({"docid":"qb://A/1","length":0,"ondup":3})", "",
        [](N &n, QBError *e) { return n.requestUploadFileWithDocID(u"qb://A/1"_s, {}, e); });
    row("new file with contents and rule", R"({"client_mtime":5,"docid":"qb://A","length":7,"name":"b","ondup":2})",
        oddBytes, [](N &n, QBError *e) {
            MemorySource source(oddBytes);
            return DocumentTransfer(n).createFile(u"qb://A"_s, u"b"_s, source, e, DocumentTransfer::TakeFreeName, 5);
        });
    row("eight megabytes", R"({"client_mtime":1795000000000001,"docid":"d","length":8388608,"ondup":3})",
        randomBytes(8 << 20), [](N &n, QBError *e) {
            MemorySource source(randomBytes(8 << 20));
            return DocumentTransfer(n).uploadFile(u"d"_s, source, e, 1795000000000001);
        });
}

REGISTER_TEST(TestDocumentTransfer)
#include "TestDocumentTransfer.moc"
