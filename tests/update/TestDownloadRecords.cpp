#include "platform/PropertyList.h"
#include "support/TestMain.h"
#include "update/QBDownloadFileInformationManager.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using Manager = QBDownloadFileInformationManager;

class TestDownloadRecords : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }
    void keepsRecords();
    void neverLeavesTheCurrentRecord();
    void survivesDamage_data();
    void survivesDamage();

private:
    QString path() const { return folder->filePath(u"download.info"_s); }

    std::unique_ptr<QTemporaryDir> folder;
};

void TestDownloadRecords::keepsRecords()
{
    Manager manager(path());
    QCOMPARE(platform::PropertyList::read(path()), QVariant(QVariantList()));
    QVERIFY(!manager.latestInformation() && !manager.infoWithIndex(0) && manager.count() == 0);
    const QVariantList first{u"a"_s, u"b"_s};
    const QVariantList second{u"c"_s};
    manager.addFiles(first);
    manager.addFiles(second);
    manager.cleanAll();
    QCOMPARE(manager.infos().size(), 2);
    QCOMPARE(manager.infoWithIndex(0)->files(), first);
    QCOMPARE(manager.latestInformation()->files(), second);
    QVERIFY(!manager.infoWithIndex(2));
    QCOMPARE(manager.indexOf(second), 1u);
    QCOMPARE(manager.indexOf(QVariantList{u"d"_s}), Manager::NotFound);

    Manager(path()).addFiles(first);
    QCOMPARE(manager.count(), 3);
    QCOMPARE(manager.infos().size(), 2);
}

void TestDownloadRecords::neverLeavesTheCurrentRecord()
{
    const auto manager = std::make_shared<Manager>(path());
    for (int i = 0; i < 3; ++i)
        manager->addFiles({i});
    QBDownloadFileInformation view = *manager->infoWithIndex(1);
    QCOMPARE(view.index(), 0u);
    QVERIFY(!view.last() && !view.next());
    view.setManager(manager);
    QCOMPARE(view.index(), Manager::NotFound);
    QVERIFY(!view.last() && !view.next());
}

void TestDownloadRecords::survivesDamage_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("records");
    QTest::newRow("empty") << ""_ba << 0;
    QTest::newRow("garbage") << QByteArray(400, '\xfe') << 0;
    QTest::newRow("dictionary") << "<plist version=\"1.0\"><dict/></plist>"_ba << 0;
    QTest::newRow("stray entries")
        << "<plist version=\"1.0\"><array><string>a</string><array><string>b</string></array><dict/></array></plist>"_ba
        << 1;
}

void TestDownloadRecords::survivesDamage()
{
    QFETCH(const QByteArray, content);
    QFETCH(const int, records);
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    Manager manager(path());
    QCOMPARE(manager.infos().size(), records);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), content);
    manager.addFiles({u"new"_s});
    QCOMPARE(Manager(path()).infos().size(), records + 1);
}

REGISTER_TEST(TestDownloadRecords)
#include "TestDownloadRecords.moc"
