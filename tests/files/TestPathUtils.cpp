#include "files/DataValidation.h"
#include "files/PathUtils.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPathUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queries_data()
    {
        const testing::Rows<QString, bool, bool, bool, bool, quint64> row("path", "exists", "isFile", "isFolder",
                                                                          "isHidden", "size");
        const QDir home(folder.path());
        QFile file(home.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("12345") == 5);
        QFile dotFile(home.filePath(u".hidden"_s));
        QVERIFY(dotFile.open(QIODevice::WriteOnly));
        QVERIFY(home.mkdir(u"folder"_s));
        QVERIFY(QFile::link(home.filePath(u"gone"_s), home.filePath(u"link"_s)));

        const quint64 missing = ~quint64(0);
        const auto sizeOfFolder = static_cast<quint64>(QFileInfo(home.filePath(u"folder"_s)).size());
        row("file", file.fileName(), true, true, false, false, quint64(5));
        row("hidden", dotFile.fileName(), true, true, false, true, quint64(0));
        row("folder", home.filePath(u"folder"_s), true, false, true, false, sizeOfFolder);
        row("missing hidden", home.filePath(u".none"_s), false, false, false, false, missing);
        row("dangling link", home.filePath(u"link"_s), false, false, false, false, missing);
        row("null", {}, false, false, false, false, missing);
    }
    void queries()
    {
        QFETCH(const QString, path);
        QTEST(PathUtils::exist(path), "exists");
        QTEST(PathUtils::existFile(path), "isFile");
        QTEST(PathUtils::existDirectory(path), "isFolder");
        QTEST(PathUtils::hidden(path), "isHidden");
        QTEST(PathUtils::size(path), "size");
    }

    void constant_data()
    {
        const testing::Rows<QString, bool> row("path", "expected");
        const QString volumes = qEnvironmentVariable("QUILLBOX_VOLUMES");
        row("root", "/", true);
        row("volume", "/Volumes/Quillbox", true);
        row("volume with slash", "/Volumes/Quillbox/", true);
        row("category", "/Volumes/Quillbox/MyDocuments.localized", false);
        row("inside category", "/Volumes/Quillbox/MyDocuments.localized/a", false);
        row("relative", "a/b/c", true);
        row("deeper volume", volumes + u"/Quillbox"_s, true);
        row("above deeper volume", volumes, true);
        row("inside deeper volume", volumes + u"/Quillbox/MyDocuments.localized"_s, false);
        row("beside deeper volume", volumes + u"/Quillbox2/x"_s, false);
    }
    void constant()
    {
        QFETCH(const QString, path);
        QTEST(PathUtils::constant(path), "expected");
    }

    void wrapWidths_data()
    {
        const testing::Rows<int, int, QList<int>> row("bytes", "width", "lineLengths");
        row("none", 60, 0, QList<int>{80});
        row("64", 60, 64, QList<int>{64, 16});
        row("76", 60, 76, QList<int>{76, 4});
        row("64 exactly full", 48, 64, QList<int>{64});
        row("10 gives pieces of 8", 15, 10, QList<int>{8, 8, 4});
        row("pieces come out even", 12, 10, QList<int>{8, 8});
        row("text as long as the width", 6, 8, QList<int>{8});
        row("shorter than the width", 3, 10, QList<int>{4});
        row("width that no piece fits", 6, 3, QList<int>{8});
    }
    void wrapWidths()
    {
        QFETCH(const int, bytes);
        QFETCH(const int, width);
        const QByteArray data(bytes, '\xA5');
        const QString text = DataValidation::base64EncodedStringWithWrapWidth(data, width);
        QList<int> lengths;
        for (const QString &line : text.split(u"\r\n"_s))
            lengths.append(static_cast<int>(line.size()));
        QTEST(lengths, "lineLengths");
        QCOMPARE(DataValidation::dataWithBase64EncodedString(text), data);
    }

    void decoding_data()
    {
        const testing::Rows<QString, QByteArray, QString> row("base64", "bytes", "text");
        row("plain", "w6TigqzDtg==", "ä€ö", "ä€ö");
        row("unknown characters", "Y*W J\r\nj世", "abc", "abc");
        row("empty", "", {}, {});
        row("nothing comes out", "*!?", {}, {});
        row("no UTF-8", "//8=", "\xFF\xFF", {});
    }
    void decoding()
    {
        QFETCH(const QString, base64);
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, text);
        const QByteArray decoded = PathUtils::base64DecodedData(base64);
        QCOMPARE(decoded, bytes);
        QCOMPARE(decoded.isNull(), bytes.isNull());
        QCOMPARE(PathUtils::base64DecodedString(base64), text);
        QCOMPARE(PathUtils::stringWithBase64EncodedString(base64).isNull(), text.isNull());
        if (!text.isNull())
            QCOMPARE(PathUtils::base64DecodedString(PathUtils::base64EncodedString(text)), text);
        QVERIFY(PathUtils::base64EncodedString(QString()).isNull());
    }

    void textDigest()
    {
        QCOMPARE(DataValidation::md5({}), u"D41D8CD98F00B204E9800998ECF8427E"_s);
        QCOMPARE(PathUtils::md5(u"abc"_s), u"900150983CD24FB0D6963F7D28E17F72"_s);
        const QString cut = u"abc"_s + QChar(u'\0') + u"def"_s;
        QCOMPARE(PathUtils::md5(cut), PathUtils::md5(u"abc"_s));
        QCOMPARE(PathUtils::md5(u"文"_s), DataValidation::md5("\xE6\x96\x87"));
    }

    void appending()
    {
        QCOMPARE(PathUtils::appending(u"/a"_s, u"b"_s), u"/a/b"_s);
        QCOMPARE(PathUtils::appending(u"/"_s, u"b"_s), u"/b"_s);
        QVERIFY(PathUtils::appending({}, u"b"_s).isNull());
    }

private:
    QTemporaryDir folder;
};

REGISTER_TEST(TestPathUtils)
#include "TestPathUtils.moc"
