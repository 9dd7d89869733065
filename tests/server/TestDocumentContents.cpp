#include "server/DocumentFixture.h"
#include "support/TestMain.h"

#include "DocumentServer/documents/ContentFolder.h"
#include "DocumentServer/documents/DocumentNames.h"

#include <httplib.h>

#include <QFileInfo>
#include <QJsonDocument>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

class TestDocumentContents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ranges_data()
    {
        QTest::addColumn<qint64>("offset");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("all") << 0LL << 10LL << QByteArray("0123456789");
        QTest::newRow("inside") << 3LL << 4LL << QByteArray("3456");
        QTest::newRow("over the end") << 8LL << 10LL << QByteArray("89");
        QTest::newRow("at the end") << 10LL << 1LL << QByteArray();
        QTest::newRow("far behind") << (1LL << 52) << (1LL << 52) << QByteArray();
        QTest::newRow("none") << 5LL << 0LL << QByteArray();
    }
    void ranges()
    {
        QFETCH(qint64, offset);
        QFETCH(qint64, length);
        QFETCH(QByteArray, bytes);
        static const DocumentFixture fixture;
        static const QString file = fixture.makeFile(fixture.entry(), u"f"_s, "0123456789");
        httplib::Client client("127.0.0.1", fixture.server.httpPort());
        const QJsonObject body{{u"docid"_s, file}, {u"offset"_s, offset}, {u"length"_s, length}};
        const auto reply = client.Post(fixture.target("file.read").toStdString(),
                                       QJsonDocument(body).toJson().toStdString(), "text/plain");
        QVERIFY(reply);
        QCOMPARE(reply->status, 200);
        QCOMPARE(QByteArray::fromStdString(reply->body), bytes);
        QCOMPARE(reply->get_header_value("Content-Length"), std::to_string(bytes.size()));
        QCOMPARE(reply->get_header_value("X-Total-Size"), std::string("10"));
        const QJsonObject metadata = fixture.call("file.metadata", {{u"docid"_s, file}}).json;
        QCOMPARE(reply->get_header_value("ETag"), metadata.value("rev"_L1).toString().toStdString());
    }

    void wrongRanges()
    {
        const DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s);
        for (const QJsonValue &wrong : QJsonArray{-1, 1.5, 1e300, u"x"_s, QJsonValue::Null, true}) {
            QCOMPARE(fixture.call("file.read", {{u"docid"_s, file}, {u"offset"_s, wrong}, {u"length"_s, 1}}).code(),
                     400002);
            QCOMPARE(fixture.call("file.read", {{u"docid"_s, file}, {u"offset"_s, 0}, {u"length"_s, wrong}}).code(),
                     400002);
        }
        for (const QString &rev : {u"ffff"_s, u"0"_s, u"-1"_s, u"x"_s})
            QCOMPARE(
                fixture.call("file.read", {{u"docid"_s, file}, {u"offset"_s, 0}, {u"length"_s, 1}, {u"rev"_s, rev}})
                    .code(),
                404006);
    }

    /// Several times the size of the parts that are read at once.
    void largeContent()
    {
        const DocumentFixture fixture;
        QByteArray content(3'500'001, '\0');
        for (qsizetype i = 0; i < content.size(); ++i)
            content[i] = i / 100'000 % 3 == 0 ? '\0' : char(i * 31 / 7);
        const QString file = fixture.makeFile(fixture.entry(), u"large"_s, content);
        QVERIFY(fixture.contentOf(file) == content);
        const QJsonObject range{{u"docid"_s, file}, {u"offset"_s, 1'234'567}, {u"length"_s, 2'000'000}};
        QVERIFY(fixture.call("file.read", range).bytes == content.mid(1'234'567, 2'000'000));
    }

    void download_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("some\r\n--text--\r\n\r\n");
        QTest::newRow("long") << QByteArray(2'500'000, '-');
    }
    void download()
    {
        QFETCH(QByteArray, content);
        static const DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s, content);
        httplib::Client client("127.0.0.1", fixture.server.httpPort());
        const QJsonObject body{{u"docid"_s, file}, {u"sn"_s, 0}};
        const auto reply = client.Post(fixture.target("file.download").toStdString(),
                                       QJsonDocument(body).toJson().toStdString(), "text/plain");
        QVERIFY(reply);
        const QByteArray type = QByteArray::fromStdString(reply->get_header_value("Content-Type"));
        QVERIFY(type.startsWith("multipart/form-data;boundary="));
        const QByteArray boundary = type.mid(type.indexOf('=') + 1);
        const QByteArray bytes = QByteArray::fromStdString(reply->body);
        const QByteArray between = "\r\n--" + boundary + "\r\n\r\n";
        const qsizetype end = bytes.indexOf(between);
        QVERIFY(bytes.startsWith("--" + boundary + "\r\n\r\n"));
        QVERIFY(bytes.mid(end + between.size()) == content + "\r\n--" + boundary + "--");
        const qsizetype start = boundary.size() + 6;
        const QJsonObject record = QJsonDocument::fromJson(bytes.mid(start, end - start)).object();
        QCOMPARE(record.value("docid"_L1).toString(), file);
        QCOMPARE(record.value("size"_L1).toInteger(), content.size());
    }

    void revisions()
    {
        DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(2), u"f"_s, "first");
        fixture.server.pass(10);
        fixture.actAs(DocumentFixture::User::Anna);
        QCOMPARE(fixture.upload({{u"docid"_s, file}, {u"client_mtime"_s, 7}}, "second one").code(), 0);
        const auto list = [&] { return fixture.callForArray("file.revisions", {{u"docid"_s, file}}); };
        const QJsonObject newest = list().first().toObject();
        const QJsonObject oldest = list().last().toObject();
        QCOMPARE(list().size(), 2);
        QCOMPARE(newest.value("editor"_L1).toString(), u"Anna (A)"_s);
        QCOMPARE(newest.value("client_mtime"_L1).toInt(), 7);
        QCOMPARE(newest.value("modified"_L1).toInteger() - oldest.value("modified"_L1).toInteger(), 10'000'000);
        const QJsonObject old{
            {u"docid"_s, file}, {u"offset"_s, 0}, {u"length"_s, 99}, {u"rev"_s, oldest.value("rev"_L1)}};
        QCOMPARE(fixture.call("file.read", old).bytes, QByteArray("first"));
        QCOMPARE(fixture.used(2), 10);

        const QJsonObject restored = fixture.call("file.restorerevision", old).json;
        QCOMPARE(fixture.contentOf(file), QByteArray("first"));
        QVERIFY(restored.value("rev"_L1) != oldest.value("rev"_L1));
        QCOMPARE(restored.value("rev"_L1), list().first().toObject().value("rev"_L1));
        QCOMPARE(list().size(), 3);
        QCOMPARE(fixture.used(2), 5);
        QCOMPARE(fixture.call("file.restorerevision", {{u"docid"_s, file}, {u"rev"_s, u"ffff"_s}}).code(), 404006);
        QCOMPARE(fixture.call("file.restorerevision", {{u"docid"_s, file}}).code(), 400002);
    }

    /// Old revisions go with their files, but not while another revision has the same content.
    void revisionsAreBounded()
    {
        DocumentFixture fixture({{u"revisions"_s, 3}});
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s, "0");
        const QJsonValue first =
            fixture.callForArray("file.revisions", {{u"docid"_s, file}}).first().toObject().value("rev"_L1);
        fixture.upload({{u"docid"_s, file}}, "1");
        QCOMPARE(fixture.call("file.restorerevision", {{u"docid"_s, file}, {u"rev"_s, first}}).status, 200);
        fixture.upload({{u"docid"_s, file}}, "2");
        QCOMPARE(fixture.contentFiles(), 3);
        const QJsonArray kept = fixture.callForArray("file.revisions", {{u"docid"_s, file}});
        QCOMPARE(kept.size(), 3);
        const QJsonObject restored{
            {u"docid"_s, file}, {u"offset"_s, 0}, {u"length"_s, 9}, {u"rev"_s, kept[1].toObject().value("rev"_L1)}};
        QCOMPARE(fixture.call("file.read", restored).bytes, QByteArray("0"));
        for (int i = 3; i < 9; ++i)
            fixture.upload({{u"docid"_s, file}}, QByteArray::number(i));
        QCOMPARE(fixture.contentFiles(), 3);
        QCOMPARE(fixture.call("file.delete", {{u"docid"_s, file}}).status, 200);
        QCOMPARE(fixture.contentFiles(), 0);
        QCOMPARE(fixture.used(), 0);
    }

    void zerosTakeNoRoom()
    {
        const QTemporaryDir folder;
        documentserver::ContentWriter writer(folder.path(), u"f"_s);
        const QByteArray zeros(1'000'000, '\0');
        const QByteArray bytes(3000, 'x');
        for (const QByteArray &part : {zeros, bytes, zeros, zeros, bytes, zeros})
            writer.write(part.constData(), part.size());
        writer.finish();
        struct stat state {
        };
        QCOMPARE(::stat(qPrintable(folder.filePath(u"f"_s)), &state), 0);
        QCOMPARE(state.st_size, 4'006'000);
        QVERIFY2(state.st_blocks * 512 <= 64 * 1024, qPrintable(QString::number(state.st_blocks)));
        QFile file(folder.filePath(u"f"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll() == zeros + bytes + zeros + zeros + bytes + zeros);
    }

    void freeNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isFile");
        QTest::addColumn<QStringList>("taken");
        QTest::addColumn<QString>("free");
        QTest::newRow("free") << u"a.txt"_s << true << QStringList{u"b.txt"_s} << u"a.txt"_s;
        QTest::newRow("file") << u"a.txt"_s << true << QStringList{u"a.txt"_s} << u"a (2).txt"_s;
        QTest::newRow("second") << u"a.txt"_s << true << QStringList{u"a.txt"_s, u"a (2).txt"_s} << u"a (3).txt"_s;
        QTest::newRow("folder") << u"a.txt"_s << false << QStringList{u"a.txt"_s} << u"a.txt (2)"_s;
        QTest::newRow("hidden") << u".profile"_s << true << QStringList{u".profile"_s} << u".profile (2)"_s;
        QTest::newRow("two dots") << u"a.tar.gz"_s << true << QStringList{u"a.tar.gz"_s} << u"a.tar (2).gz"_s;
        const QString longName = u"文"_s.repeated(83) + u".txt"_s;
        QTest::newRow("long") << longName << true << QStringList{longName} << u"文"_s.repeated(82) + u" (2).txt"_s;
        const QString longEnd = u"a."_s + QString(253, u'b');
        QTest::newRow("long extension") << longEnd << true << QStringList{longEnd} << longEnd.left(251) + u" (2)"_s;
    }
    void freeNames()
    {
        QFETCH(QString, name);
        QFETCH(bool, isFile);
        QFETCH(QStringList, taken);
        QTEST(documentserver::freeName(name, isFile, QSet<QString>(taken.begin(), taken.end())), "free");
    }
};

REGISTER_TEST(TestDocumentContents)
#include "TestDocumentContents.moc"
