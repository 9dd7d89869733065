#include "files/PathBook.h"
#include "files/QBPathIndicator.h"
#include "support/TestMain.h"

#include <QTest>

namespace
{

struct GivenFolders : platform::Folders {
    QString libraryFolder = QStringLiteral("/home/u/Library");

    QString home() const override { return {}; }
    QString library() const override { return libraryFolder; }
    QString caches() const override { return {}; }
    QString fonts() const override { return {}; }
    QString temporary() const override { return {}; }
    QString volumes() const override { return QStringLiteral("/Volumes"); }
    QString userDefaultsFile() const override { return {}; }
};

const QString container =
    QStringLiteral("/home/u/Library/Containers/com.velto.quillbox.FinderHelper1/Data/Library/Application Support");

} // namespace

class TestPathIndicator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void supportDirectoryPerProcess_data();
    void supportDirectoryPerProcess();
    void unknownLibraryGivesNullEverywhere();
    void files_data();
    void files();
    void categories();
};

void TestPathIndicator::supportDirectoryPerProcess_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("expected");
    QTest::newRow("manager") << QStringLiteral("com.velto.quillbox") << container;
    QTest::newRow("no bundle") << QString() << container;
    QTest::newRow("the container's own name") << QStringLiteral("com.velto.quillbox.FinderHelper1") << container;
    QTest::newRow("helper") << QStringLiteral("com.velto.quillbox.FinderHelper")
                            << QStringLiteral("/home/u/Library/Application Support");
}

void TestPathIndicator::supportDirectoryPerProcess()
{
    QFETCH(const QString, identifier);
    QFETCH(const QString, expected);
    const GivenFolders folders;
    const PathBook book(folders, identifier);
    QCOMPARE(book.applicationSupportDirectory(), expected);
    QCOMPARE(book.applicationSupport(), expected + QStringLiteral("/com.velto.quillbox"));
    QCOMPARE(book.quillboxVolume(), QStringLiteral("/Volumes/Quillbox"));
}

void TestPathIndicator::unknownLibraryGivesNullEverywhere()
{
    GivenFolders folders;
    folders.libraryFolder = QString();
    for (const auto identifier : {u"com.velto.quillbox", u"com.velto.quillbox.FinderHelper"}) {
        const PathBook book(folders, QString::fromUtf16(identifier));
        QVERIFY(book.applicationSupportDirectory().isNull());
        QVERIFY(book.applicationSupport().isNull());
        QVERIFY(book.inApplicationSupport(QStringLiteral("BACKUP")).isNull());
    }
}

void TestPathIndicator::files_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::newRow("store") << QBPathIndicator::pathForGlobeInformation() << QStringLiteral("quillbox.globe");
    QTest::newRow("downloads") << QBPathIndicator::pathForDownloadFileInformation() << QStringLiteral("download.info");
    QTest::newRow("cache flags") << QBPathIndicator::pathForclearCachePlist() << QStringLiteral("clearCache.plist");
    QTest::newRow("backup") << QBPathIndicator::pathForBackup() << QStringLiteral("BACKUP");
    QTest::newRow("core data") << QBPathIndicator::pathForCoreDataStorage() << QStringLiteral("COREDATA");
}

void TestPathIndicator::files()
{
    QFETCH(const QString, path);
    QFETCH(const QString, name);
    QCOMPARE(path, QBPathIndicator::pathForApplicationSupport() + u'/' + name);
    QVERIFY(path.startsWith(qEnvironmentVariable("HOME")));
    QVERIFY(path.contains(QStringLiteral("com.velto.quillbox.FinderHelper1/Data/Library/Application Support/"
                                         "com.velto.quillbox/")));
    QVERIFY(QBPathIndicator::pathForCoreDataModel(QStringLiteral("none")).isNull());
}

void TestPathIndicator::categories()
{
    const QStringList names = {QString(),
                               QStringLiteral("MyDocuments.localized"),
                               QStringLiteral("GroupDocuments.localized"),
                               QStringLiteral("Libraries.localized"),
                               QStringLiteral("SharedDocuments.localized"),
                               QStringLiteral("ArchiveLibraries.localized"),
                               QStringLiteral("ShareGroupDocuments.localized"),
                               QStringLiteral("UnSyncCatalogs.localized"),
                               QString()};
    for (int type = 0; type < names.size(); ++type)
        QCOMPARE(QBPathIndicator::categoryNameWithType(type), names.at(type));
    QVERIFY(QBPathIndicator::categoryNameWithType(0).isNull());
    QVERIFY(QBPathIndicator::categoryNameWithType(-1).isNull());
}

REGISTER_TEST(TestPathIndicator)
#include "TestPathIndicator.moc"
