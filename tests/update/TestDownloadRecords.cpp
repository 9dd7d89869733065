#include "platform/PropertyList.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "update/QBDownloadFileInformationManager.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using Manager = QBDownloadFileInformationManager;

class TestDownloadRecords : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        path = folder->filePath(u"download.info"_s);
    }

    void keepsRecords()
    {
        const auto manager = std::make_shared<Manager>(path);
        QCOMPARE(platform::PropertyList::read(path), QVariant(QVariantList()));
        QVERIFY(!manager->latestInformation() && !manager->infoWithIndex(0) && manager->count() == 0);
        const QVariantList first{u"a"_s, u"b"_s};
        const QVariantList second{u"c"_s};
        manager->addFiles(first);
        manager->addFiles(second);
        manager->cleanAll();
        QCOMPARE(manager->infos().size(), 2);
        QCOMPARE(manager->infoWithIndex(0)->files(), first);
        QCOMPARE(manager->latestInformation()->files(), second);
        QVERIFY(!manager->infoWithIndex(2));
        QCOMPARE(manager->indexOf(second), 1u);
        QCOMPARE(manager->indexOf(QVariantList{u"d"_s}), Manager::NotFound);
        Manager(path).addFiles(first);
        QCOMPARE(manager->count(), 3);
        QCOMPARE(manager->infos().size(), 2);
        // A view has neither a previous nor a next record, with its manager or without.
        QBDownloadFileInformation view = *manager->infoWithIndex(1);
        QVERIFY(view.index() == 0 && !view.last() && !view.next());
        view.setManager(manager);
        QVERIFY(view.index() == Manager::NotFound && !view.last() && !view.next());
    }

    void survivesDamage_data()
    {
        const testing::Rows<QByteArray, int> row("content", "records");
        row("empty", "", 0);
        row("garbage", QByteArray(400, '\xfe'), 0);
        row("dictionary", "<plist version=\"1.0\"><dict/></plist>", 0);
        row("stray entries",
            "<plist version=\"1.0\"><array><string>a</string><array><string>b</string></array><dict/></array></plist>",
            1);
    }
    void survivesDamage()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const int, records);
        QVERIFY(testing::writeFile(path, content));
        Manager manager(path);
        QCOMPARE(manager.infos().size(), records);
        QCOMPARE(testing::contentOf(path), content);
        manager.addFiles({u"new"_s});
        QCOMPARE(Manager(path).infos().size(), records + 1);
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString path;
};

REGISTER_TEST(TestDownloadRecords)
#include "TestDownloadRecords.moc"
