#include "files/DataValidation.h"
#include "files/PathUtils.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestPathUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queries_data();
    void queries();
    void constant_data();
    void constant();
    void wrapWidths_data();
    void wrapWidths();
    void decoding_data();
    void decoding();
    void textDigest();
    void appending();

private:
    QTemporaryDir folder;
};

void TestPathUtils::queries_data()
{
    const QDir home(folder.path());
    QFile file(home.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("12345") == 5);
    QFile dotFile(home.filePath(QStringLiteral(".hidden")));
    QVERIFY(dotFile.open(QIODevice::WriteOnly));
    QVERIFY(home.mkdir(QStringLiteral("folder")));
    QVERIFY(QFile::link(home.filePath(QStringLiteral("gone")), home.filePath(QStringLiteral("link"))));

    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<bool>("isHidden");
    QTest::addColumn<quint64>("size");
    const quint64 missing = ~quint64(0);
    const auto sizeOfFolder = static_cast<quint64>(QFileInfo(home.filePath(QStringLiteral("folder"))).size());
    QTest::newRow("file") << file.fileName() << true << true << false << false << quint64(5);
    QTest::newRow("hidden") << dotFile.fileName() << true << true << false << true << quint64(0);
    QTest::newRow("folder") << home.filePath(QStringLiteral("folder")) << true << false << true << false
                            << sizeOfFolder;
    QTest::newRow("missing hidden") << home.filePath(QStringLiteral(".none")) << false << false << false << false
                                    << missing;
    QTest::newRow("dangling link") << home.filePath(QStringLiteral("link")) << false << false << false << false
                                   << missing;
    QTest::newRow("null") << QString() << false << false << false << false << missing;
}

void TestPathUtils::queries()
{
    QFETCH(const QString, path);
    QTEST(PathUtils::exist(path), "exists");
    QTEST(PathUtils::existFile(path), "isFile");
    QTEST(PathUtils::existDirectory(path), "isFolder");
    QTEST(PathUtils::hidden(path), "isHidden");
    QTEST(PathUtils::size(path), "size");
}

void TestPathUtils::constant_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("expected");
    const QString volumes = qEnvironmentVariable("QUILLBOX_VOLUMES");
    QTest::newRow("root") << QStringLiteral("/") << true;
    QTest::newRow("volume") << QStringLiteral("/Volumes/Quillbox") << true;
    QTest::newRow("volume with slash") << QStringLiteral("/Volumes/Quillbox/") << true;
    QTest::newRow("category") << QStringLiteral("/Volumes/Quillbox/MyDocuments.localized") << false;
    QTest::newRow("inside category") << QStringLiteral("/Volumes/Quillbox/MyDocuments.localized/a") << false;
    QTest::newRow("relative") << QStringLiteral("a/b/c") << true;
    QTest::newRow("deeper volume") << volumes + QStringLiteral("/Quillbox") << true;
    QTest::newRow("above deeper volume") << volumes << true;
    QTest::newRow("inside deeper volume") << volumes + QStringLiteral("/Quillbox/MyDocuments.localized") << false;
    QTest::newRow("beside deeper volume") << volumes + QStringLiteral("/Quillbox2/x") << false;
}

void TestPathUtils::constant()
{
    QFETCH(const QString, path);
    QTEST(PathUtils::constant(path), "expected");
}

void TestPathUtils::wrapWidths_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("width");
    QTest::addColumn<QList<int>>("lineLengths");
    QTest::newRow("none") << 60 << 0 << QList<int>{80};
    QTest::newRow("64") << 60 << 64 << QList<int>{64, 16};
    QTest::newRow("76") << 60 << 76 << QList<int>{76, 4};
    QTest::newRow("64 exactly full") << 48 << 64 << QList<int>{64};
    QTest::newRow("10 gives pieces of 8") << 15 << 10 << QList<int>{8, 8, 4};
    QTest::newRow("pieces come out even") << 12 << 10 << QList<int>{8, 8};
    QTest::newRow("text as long as the width") << 6 << 8 << QList<int>{8};
    QTest::newRow("shorter than the width") << 3 << 10 << QList<int>{4};
    QTest::newRow("width that no piece fits") << 6 << 3 << QList<int>{8};
}

void TestPathUtils::wrapWidths()
{
    QFETCH(const int, bytes);
    QFETCH(const int, width);
    const QByteArray data(bytes, '\xA5');
    const QString text = DataValidation::base64EncodedStringWithWrapWidth(data, width);
    QList<int> lengths;
    for (const QString &line : text.split(QStringLiteral("\r\n")))
        lengths.append(static_cast<int>(line.size()));
    QTEST(lengths, "lineLengths");
    QCOMPARE(DataValidation::dataWithBase64EncodedString(text), data);
}

void TestPathUtils::decoding_data()
{
    QTest::addColumn<QString>("base64");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << QStringLiteral("w6TigqzDtg==") << QByteArray("ä€ö") << QStringLiteral("ä€ö");
    QTest::newRow("unknown characters") << QStringLiteral("Y*W J\r\nj世") << QByteArray("abc") << QStringLiteral("abc");
    QTest::newRow("empty") << QStringLiteral("") << QByteArray() << QString();
    QTest::newRow("nothing comes out") << QStringLiteral("*!?") << QByteArray() << QString();
    QTest::newRow("no UTF-8") << QStringLiteral("//8=") << QByteArray("\xFF\xFF") << QString();
}

void TestPathUtils::decoding()
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

void TestPathUtils::textDigest()
{
    QCOMPARE(DataValidation::md5({}), QStringLiteral("D41D8CD98F00B204E9800998ECF8427E"));
    QCOMPARE(PathUtils::md5(QStringLiteral("abc")), QStringLiteral("900150983CD24FB0D6963F7D28E17F72"));
    const QString cut = QStringLiteral("abc") + QChar(u'\0') + QStringLiteral("def");
    QCOMPARE(PathUtils::md5(cut), PathUtils::md5(QStringLiteral("abc")));
    QCOMPARE(PathUtils::md5(QStringLiteral("文")), DataValidation::md5("\xE6\x96\x87"));
}

void TestPathUtils::appending()
{
    QCOMPARE(PathUtils::appending(QStringLiteral("/a"), QStringLiteral("b")), QStringLiteral("/a/b"));
    QCOMPARE(PathUtils::appending(QStringLiteral("/"), QStringLiteral("b")), QStringLiteral("/b"));
    QVERIFY(PathUtils::appending({}, QStringLiteral("b")).isNull());
}

REGISTER_TEST(TestPathUtils)
#include "TestPathUtils.moc"
