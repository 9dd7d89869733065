#include "files/PathBook.h"
#include "files/QBPathIndicator.h"
#include "support/FakeHost.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

struct GivenFolders : testing::FakeFolders {
    QString libraryFolder = u"/home/u/Library"_s;

    QString library() const override { return libraryFolder; }
    QString volumes() const override { return u"/Volumes"_s; }
};

const QString container =
    u"/home/u/Library/Containers/com.velto.quillbox.FinderHelper1/Data/Library/Application Support"_s;

} // namespace

class TestPathIndicator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void supportDirectoryPerProcess_data()
    {
        const testing::Rows<QString, QString> row("identifier", "expected");
        row("manager", "com.velto.quillbox", container);
        row("no bundle", {}, container);
        row("the container's own name", "com.velto.quillbox.FinderHelper1", container);
        row("helper", "com.velto.quillbox.FinderHelper", "/home/u/Library/Application Support");
    }
    void supportDirectoryPerProcess()
    {
        QFETCH(const QString, identifier);
        QFETCH(const QString, expected);
        const GivenFolders folders;
        const PathBook book(folders, identifier);
        QCOMPARE(book.applicationSupportDirectory(), expected);
        QCOMPARE(book.applicationSupport(), expected + u"/com.velto.quillbox"_s);
        QCOMPARE(book.quillboxVolume(), u"/Volumes/Quillbox"_s);
    }

    void unknownLibraryGivesNullEverywhere()
    {
        GivenFolders folders;
        folders.libraryFolder = QString();
        for (const auto identifier : {u"com.velto.quillbox", u"com.velto.quillbox.FinderHelper"}) {
            const PathBook book(folders, QString::fromUtf16(identifier));
            QVERIFY(book.applicationSupportDirectory().isNull());
            QVERIFY(book.applicationSupport().isNull());
            QVERIFY(book.inApplicationSupport(u"BACKUP"_s).isNull());
        }
    }

    void files()
    {
        const QString folder =
            qEnvironmentVariable("HOME") + "/.local/share/com.velto.quillbox/Library/Containers/"_L1 +
            "com.velto.quillbox.FinderHelper1/Data/Library/Application Support/com.velto.quillbox/"_L1;
        QCOMPARE(QBPathIndicator::pathForApplicationSupport() + u'/', folder);
        QCOMPARE(QBPathIndicator::pathForGlobeInformation(), folder + "quillbox.globe"_L1);
        QCOMPARE(QBPathIndicator::pathForDownloadFileInformation(), folder + "download.info"_L1);
        QCOMPARE(QBPathIndicator::pathForclearCachePlist(), folder + "clearCache.plist"_L1);
        QCOMPARE(QBPathIndicator::pathForBackup(), folder + "BACKUP"_L1);
        QCOMPARE(QBPathIndicator::pathForCoreDataStorage(), folder + "COREDATA"_L1);
        QVERIFY(QBPathIndicator::pathForCoreDataModel(u"none"_s).isNull());
    }

    void categories()
    {
        const QStringList names{u"MyDocuments"_s,     u"GroupDocuments"_s,   u"Libraries"_s,
                                u"SharedDocuments"_s, u"ArchiveLibraries"_s, u"ShareGroupDocuments"_s,
                                u"UnSyncCatalogs"_s};
        for (int type = 1; type <= names.size(); ++type)
            QCOMPARE(QBPathIndicator::categoryNameWithType(type), names.at(type - 1) + ".localized"_L1);
        for (const int none : {-1, 0, 8})
            QVERIFY(QBPathIndicator::categoryNameWithType(none).isNull());
    }
};

REGISTER_TEST(TestPathIndicator)
#include "TestPathIndicator.moc"
