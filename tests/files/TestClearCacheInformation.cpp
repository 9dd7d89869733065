#include "files/QBClearCacheInformation.h"
#include "platform/PropertyList.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using testing::propertyList;

class TestClearCacheInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void keepsEachUsersChoice()
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

    void losesAnUpdateWithoutASeed()
    {
        QBClearCacheInformation flags(path());
        flags.updateClearCacheSettingWindowFlag(true, u"ann"_s);
        QVERIFY(!flags.clearCacheSettingWindowFlag(u"ann"_s));
        QCOMPARE(QFile(path()).size(), 0);
    }

    void survivesDamage()
    {
        const QByteArray key = "<dict><key>ClearCacheSettingWindowFlag</key>";
        for (const QByteArray &content :
             {QByteArray(300, '\xfe'), propertyList("<array/>"), propertyList(key + "<string>ann</string></dict>"),
              propertyList(key + "<dict><key>ann</key><string>yes</string></dict></dict>")}) {
            QBClearCacheInformation flags(path());
            QVERIFY(testing::writeFile(path(), content));
            QVERIFY(!flags.clearCacheSettingWindowFlag(u"ann"_s));
            flags.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(true, u"ben"_s);
            flags.updateClearCacheSettingWindowFlag(true, u"ann"_s);
            QVERIFY(flags.clearCacheSettingWindowFlag(u"ann"_s) && flags.clearCacheSettingWindowFlag(u"ben"_s));
        }
    }

private:
    QString path() const { return folder->filePath(u"data/clearCache.plist"_s); }

    std::unique_ptr<QTemporaryDir> folder;
};

REGISTER_TEST(TestClearCacheInformation)
#include "TestClearCacheInformation.moc"
