#include "server/DocumentFixture.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include "DocumentServer/documents/ContentFolder.h"
#include "DocumentServer/documents/DocumentNames.h"

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
        const testing::Rows<qint64, qint64, QByteArray> row("offset", "length", "bytes");
        row("all", 0, 10, "0123456789");
        row("inside", 3, 4, "3456");
        row("over the end", 8, 10, "89");
        row("at the end", 10, 1, {});
        row("far behind", 1LL << 52, 1LL << 52, {});
        row("none", 5, 0, {});
    }
    void ranges()
    {
        QFETCH(qint64, offset);
        QFETCH(qint64, length);
        QFETCH(QByteArray, bytes);
        static const DocumentFixture fixture;
        static const QString file = fixture.makeFile(fixture.entry(), u"f"_s, "0123456789");
        const Answer answer = fixture.read(file, offset, length);
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.bytes, bytes);
        QCOMPARE(answer.headers.value("content-length"), QByteArray::number(bytes.size()));
        QCOMPARE(answer.headers.value("x-total-size"), "10"_ba);
        QCOMPARE(answer.headers.value("etag"), fixture.call("file.metadata", file).text("rev").toLatin1());
    }

    void wrongRanges()
    {
        const DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s);
        for (const QJsonValue &wrong : QJsonArray{-1, 1.5, 1e300, u"x"_s, QJsonValue::Null, true}) {
            QCOMPARE(fixture.read(file, wrong, 1).code(), 400002);
            QCOMPARE(fixture.read(file, 0, wrong).code(), 400002);
        }
        for (const QString &rev : {u"ffff"_s, u"0"_s, u"-1"_s, u"x"_s})
            QCOMPARE(fixture.read(file, 0, 1, rev).code(), 404006);
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
        QVERIFY(fixture.read(file, 1'234'567, 2'000'000).bytes == content.mid(1'234'567, 2'000'000));
    }

    void download()
    {
        const DocumentFixture fixture;
        for (const QByteArray &content : {""_ba, "some\r\n--text--\r\n\r\n"_ba, QByteArray(2'500'000, '-')}) {
            const QString file = fixture.makeFile(fixture.entry(), u"f"_s, content);
            const Answer answer = fixture.call("file.download", {{u"docid"_s, file}, {u"sn"_s, 0}});
            const QByteArray type = answer.headers.value("content-type");
            QVERIFY(type.startsWith("multipart/form-data;boundary="));
            const QByteArray opening = "--" + type.mid(type.indexOf('=') + 1) + "\r\n\r\n";
            const qsizetype end = answer.bytes.indexOf("\r\n" + opening);
            QVERIFY(answer.bytes.startsWith(opening));
            QVERIFY(answer.bytes.mid(end + 2 + opening.size()) == content + "\r\n" + opening.chopped(4) + "--");
            const QByteArray json = answer.bytes.mid(opening.size(), end - opening.size());
            const QJsonObject record = QJsonDocument::fromJson(json).object();
            QCOMPARE(record.value("docid"_L1).toString(), file);
            QCOMPARE(record.value("size"_L1).toInteger(), content.size());
        }
    }

    void revisions()
    {
        DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(2), u"f"_s, "first");
        fixture.server.pass(10);
        fixture.actAs(DocumentFixture::User::Anna);
        QCOMPARE(fixture.upload({{u"docid"_s, file}, {u"client_mtime"_s, 7}}, "second one").code(), 0);
        const auto list = [&] { return fixture.callForArray("file.revisions", file); };
        const QJsonObject newest = list().first().toObject();
        const QJsonObject oldest = list().last().toObject();
        QCOMPARE(list().size(), 2);
        QCOMPARE(newest.value("editor"_L1).toString(), u"Anna (A)"_s);
        QCOMPARE(newest.value("client_mtime"_L1).toInt(), 7);
        QCOMPARE(newest.value("modified"_L1).toInteger() - oldest.value("modified"_L1).toInteger(), 10'000'000);
        const QJsonObject old{{u"docid"_s, file}, {u"rev"_s, oldest.value("rev"_L1)}};
        QCOMPARE(fixture.read(file, 0, 99, oldest.value("rev"_L1)).bytes, "first"_ba);
        QCOMPARE(fixture.used(2), 10);

        const QJsonObject restored = fixture.call("file.restorerevision", old).json;
        QCOMPARE(fixture.contentOf(file), QByteArray("first"));
        QVERIFY(restored.value("rev"_L1) != oldest.value("rev"_L1));
        QCOMPARE(restored.value("rev"_L1), list().first().toObject().value("rev"_L1));
        QCOMPARE(list().size(), 3);
        QCOMPARE(fixture.used(2), 5);
        QCOMPARE(fixture.call("file.restorerevision", {{u"docid"_s, file}, {u"rev"_s, u"ffff"_s}}).code(), 404006);
        QCOMPARE(fixture.call("file.restorerevision", file).code(), 400002);
    }

    /// Old revisions go with their files, but not while another revision has the same content.
    void revisionsAreBounded()
    {
        DocumentFixture fixture({{u"revisions"_s, 3}});
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s, "0");
        const QJsonValue first = fixture.callForArray("file.revisions", file).first().toObject().value("rev"_L1);
        fixture.upload({{u"docid"_s, file}}, "1");
        QCOMPARE(fixture.call("file.restorerevision", {{u"docid"_s, file}, {u"rev"_s, first}}).status, 200);
        fixture.upload({{u"docid"_s, file}}, "2");
        QCOMPARE(fixture.contentFiles(), 3);
        const QJsonArray kept = fixture.callForArray("file.revisions", file);
        QCOMPARE(kept.size(), 3);
        QCOMPARE(fixture.read(file, 0, 9, kept[1].toObject().value("rev"_L1)).bytes, "0"_ba);
        for (int i = 3; i < 9; ++i)
            fixture.upload({{u"docid"_s, file}}, QByteArray::number(i));
        QCOMPARE(fixture.contentFiles(), 3);
        QCOMPARE(fixture.call("file.delete", file).status, 200);
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
        struct stat state = {};
        QCOMPARE(::stat(qPrintable(folder.filePath(u"f"_s)), &state), 0);
        QCOMPARE(state.st_size, 4'006'000);
        QVERIFY2(state.st_blocks * 512 <= 64 * 1024, qPrintable(QString::number(state.st_blocks)));
        QVERIFY(testing::contentOf(folder.filePath(u"f"_s)) == zeros + bytes + zeros + zeros + bytes + zeros);
    }

    void freeNames_data()
    {
        const testing::Rows<QString, bool, QStringList, QString> row("name", "isFile", "taken", "free");
        row("free", "a.txt", true, {"b.txt"}, "a.txt");
        row("file", "a.txt", true, {"a.txt"}, "a (2).txt");
        row("second", "a.txt", true, {"a.txt", "a (2).txt"}, "a (3).txt");
        row("folder", "a.txt", false, {"a.txt"}, "a.txt (2)");
        row("hidden", ".profile", true, {".profile"}, ".profile (2)");
        row("two dots", "a.tar.gz", true, {"a.tar.gz"}, "a.tar (2).gz");
        const QString longName = u"文"_s.repeated(83) + u".txt"_s;
        row("long", longName, true, {longName}, u"文"_s.repeated(82) + u" (2).txt"_s);
        const QString longEnd = u"a."_s + QString(253, u'b');
        row("long extension", longEnd, true, {longEnd}, longEnd.left(251) + u" (2)"_s);
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
