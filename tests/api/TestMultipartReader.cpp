#include "api/MultipartBody.h"
#include "api/MultipartReader.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

class Collector : public ByteSink
{
public:
    bool write(const char *data, qint64 count) override
    {
        bytes.append(data, count);
        return bytes.size() <= most;
    }

    QByteArray bytes;
    qsizetype most = 1'000'000;
};

QByteArray message(const QByteArray &record, const QByteArray &contents)
{
    MemorySource source(contents);
    MultipartBody body("B0undary", record, source);
    QByteArray bytes(body.size(), Qt::Uninitialized);
    for (qint64 at = 0; at < bytes.size();) {
        const qint64 got = body.readAt(at, bytes.data() + at, bytes.size() - at);
        if (got <= 0)
            return "the body ends early";
        at += got;
    }
    return bytes;
}

} // namespace

class TestMultipartReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesAnUpload()
    {
        QCOMPARE(message("{}", "a\r\nb"), "--B0undary\r\n\r\n{}\r\n--B0undary\r\n\r\na\r\nb\r\n--B0undary--"_ba);
        QCOMPARE(message("{}", ""), "--B0undary\r\n\r\n{}\r\n--B0undary\r\n\r\n\r\n--B0undary--"_ba);
        QCOMPARE(MultipartBody::contentType("B0undary"), "multipart/form-data;boundary=B0undary"_ba);
    }

    void givesEveryRangeOfABody()
    {
        const QByteArray whole = message("{\"a\":1}", "contents");
        MemorySource source("contents");
        MultipartBody body("B0undary", "{\"a\":1}", source);
        for (qint64 from = 0; from < whole.size(); ++from)
            for (qint64 most : {1, 3, 1000}) {
                QByteArray piece(most, '#');
                const qint64 got = body.readAt(from, piece.data(), most);
                QVERIFY(got > 0 && got <= most);
                QCOMPARE(piece.left(got), whole.mid(from, got));
                QCOMPARE(piece.mid(got), QByteArray(most - got, '#'));
            }
    }

    void readsWhateverTheCut_data()
    {
        const testing::Rows<QByteArray> row("contents");
        row("empty", "");
        row("text", "some bytes");
        row("line breaks", "\r\n\r\r\n\n\r\n--\r\n-\r\n");
        row("nearly a boundary", "\r\n--B0undar\r\n--B0\r\r\n--\r--B0undary\n--B0undary--\r\n--b0undary");
        row("begins like one", "--B0undary\r\n\r\n");
        row("ends like one", "x\r\n--B0undar");
        row("zeros", QByteArray(20, '\0'));
    }
    void readsWhateverTheCut()
    {
        QFETCH(const QByteArray, contents);
        const QByteArray whole = message("{\"name\":\"\r\n--B\"}", contents);
        QByteArray headed = "--B0undary \r\nA: b\r\n" + whole.mid(12);
        headed.replace("\r\n--B0undary\r\n\r\n", "\r\n--B0undary\t\r\nC: d\r\nE: f\r\n\r\n");
        for (const QByteArray &bytes : {whole, "preamble\r\n" + headed + "\r\nepilogue --B0undary"})
            for (qsizetype cut = 0; cut <= bytes.size(); ++cut) {
                Collector sink;
                MultipartReader reader("B0undary", sink);
                QVERIFY(reader.write(bytes.constData(), cut));
                QVERIFY(reader.write(bytes.constData() + cut, bytes.size() - cut));
                QVERIFY(reader.isComplete());
                QCOMPARE(reader.record(), "{\"name\":\"\r\n--B\"}"_ba);
                QCOMPARE(sink.bytes, contents);
                QCOMPARE(reader.contentsSize(), contents.size());
            }
        Collector sink;
        MultipartReader reader("B0undary", sink);
        for (qsizetype at = 0; at < whole.size(); ++at) {
            QVERIFY2(!reader.isComplete(), "complete with the very last byte");
            QVERIFY(reader.write(whole.constData() + at, 1));
        }
        QVERIFY(reader.isComplete());
        QCOMPARE(sink.bytes, contents);
    }

    void refusesMalformed_data()
    {
        const testing::Rows<QByteArray, QByteArray> row("boundary", "bytes");
        row("no boundary", "", "--\r\n\r\n{}\r\n--\r\n\r\nx\r\n----");
        row("line break in the boundary", "a\rb", "--a\rb\r\n");
        row("endless boundary", QByteArray(201, 'b'), "x");
        row("closed at once", "B", "--B--");
        row("record only", "B", "--B\r\n\r\n{}\r\n--B--");
        row("three parts", "B", "--B\r\n\r\n{}\r\n--B\r\n\r\nx\r\n--B\r\n\r\ny\r\n--B--");
        row("longer boundary", "B", "--Boom\r\n\r\n{}");
        row("endless preamble", "B", QByteArray(100'000, 'x'));
        row("endless headers", "B", "--B\r\n" + QByteArray("A: b\r\n").repeated(20'000));
        row("endless header", "B", "--B\r\nA: " + QByteArray(100'000, 'x'));
    }
    void refusesMalformed()
    {
        QFETCH(const QByteArray, boundary);
        QFETCH(const QByteArray, bytes);
        Collector sink;
        MultipartReader reader(boundary, sink);
        QVERIFY(!reader.write(bytes.constData(), bytes.size()));
        QVERIFY(reader.isMalformed());
        QVERIFY(!reader.isComplete());
        QVERIFY(!reader.write("x", 1));
    }

    void boundsWhatItKeeps()
    {
        Collector sink;
        MultipartReader reader("B", sink);
        QVERIFY(reader.write("--B\r\n\r\n", 7));
        const QByteArray block(1024, 'x');
        int blocks = 0;
        while (reader.write(block.constData(), block.size()) && blocks < 5000)
            ++blocks;
        QCOMPARE(blocks, 1024);
        QVERIFY(reader.isMalformed());
    }

    void stopsWithItsSink()
    {
        Collector sink;
        sink.most = 3;
        MultipartReader reader("B0undary", sink);
        const QByteArray bytes = message("{}", "1234\r5678");
        QVERIFY(!reader.write(bytes.constData(), bytes.size()));
        QVERIFY(!reader.isMalformed());
        QVERIFY(!reader.isComplete());
        QCOMPARE(sink.bytes, "1234"_ba);
    }

    void findsTheBoundary()
    {
        QCOMPARE(MultipartReader::boundaryOf("multipart/form-data;boundary=abc"), "abc"_ba);
        QCOMPARE(MultipartReader::boundaryOf("Multipart/Form-Data; Boundary=abc ; charset=x"), "abc"_ba);
        QCOMPARE(MultipartReader::boundaryOf("multipart/mixed; boundary=\"a;b\"; x=y"), "a;b"_ba);
        QVERIFY(MultipartReader::boundaryOf("multipart/form-data;boundary=").isEmpty());
        QVERIFY(MultipartReader::boundaryOf("multipart/form-data").isNull());
    }
};

REGISTER_TEST(TestMultipartReader)
#include "TestMultipartReader.moc"
