#include "files/QBClearCacheInformation.h"
#include "platform/PropertyList.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestClearCacheInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }
    void keepsEachUsersChoice();
    void losesAnUpdateWithoutASeed();
    void survivesDamage_data();
    void survivesDamage();

private:
    QString path() const { return folder->filePath(u"data/clearCache.plist"_s); }

    std::unique_ptr<QTemporaryDir> folder;
};

void TestClearCacheInformation::keepsEachUsersChoice()
{
    QBClearCacheInformation flags(path());
    QVERIFY(QFile::exists(path()));
    QVERIFY(!flags.clearCacheSettingWindowFlag(u"ann"_s) && !flags.clearCacheAlertFlag(u"ann"_s));

    flags.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(true, u"ann"_s);
    flags.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(false, u"ben"_s);
    flags.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(false, u"ann"_s);
    QVERIFY(flags.clearCacheSettingWindowFlag(u"ann"_s) && flags.clearCacheAlertFlag(u"ann"_s));
    QVERIFY(!flags.clearCacheSettingWindowFlag(u"ben"_s) && !flags.clearCacheAlertFlag(u"ben"_s));

    flags.updateClearCacheShowFlag(false, u"ann"_s);
    flags.updateClearCacheSettingWindowFlag(true, u"ben"_s);
    const QBClearCacheInformation companion(path());
    QVERIFY(companion.clearCacheSettingWindowFlag(u"ann"_s) && !companion.clearCacheAlertFlag(u"ann"_s));
    QVERIFY(companion.clearCacheSettingWindowFlag(u"ben"_s) && !companion.clearCacheAlertFlag(u"ben"_s));
    const QVariantMap root = platform::PropertyList::readDictionary(path()).value();
    QCOMPARE(root.keys(), (QStringList{u"ClearCacheSettingWindowFlag"_s, u"ClearCacheShowAlertFlag"_s}));
    QCOMPARE(root.first().toMap().value(u"ben"_s), QVariant(true));
}

void TestClearCacheInformation::losesAnUpdateWithoutASeed()
{
    QBClearCacheInformation flags(path());
    flags.updateClearCacheSettingWindowFlag(true, u"ann"_s);
    QVERIFY(!flags.clearCacheSettingWindowFlag(u"ann"_s));
    QCOMPARE(QFile(path()).size(), 0);
}

void TestClearCacheInformation::survivesDamage_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("garbage") << QByteArray(300, '\xfe');
    QTest::newRow("no dictionary") << "<plist version=\"1.0\"><array/></plist>"_ba;
    const QByteArray key = "<plist version=\"1.0\"><dict><key>ClearCacheSettingWindowFlag</key>";
    QTest::newRow("text for the users") << key + "<string>ann</string></dict></plist>";
    QTest::newRow("text for a flag") << key + "<dict><key>ann</key><string>yes</string></dict></dict></plist>";
}

void TestClearCacheInformation::survivesDamage()
{
    QFETCH(const QByteArray, content);
    QBClearCacheInformation flags(path());
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    QVERIFY(!flags.clearCacheSettingWindowFlag(u"ann"_s));
    flags.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(true, u"ben"_s);
    flags.updateClearCacheSettingWindowFlag(true, u"ann"_s);
    QVERIFY(flags.clearCacheSettingWindowFlag(u"ann"_s) && flags.clearCacheSettingWindowFlag(u"ben"_s));
}

REGISTER_TEST(TestClearCacheInformation)
#include "TestClearCacheInformation.moc"
