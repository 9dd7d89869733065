#include "files/Branding.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using testing::propertyList;

class TestBranding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults_data()
    {
        const testing::Rows<QByteArray, bool> row("content", "isDictionary");
        row("missing", {}, false);
        row("empty", "", false);
        row("garbage", "\x00\xFF{{{"_ba, false);
        row("cut", "<plist version=\"1.0\"><dict><key>themeColor</key><stri", false);
        row("no dictionary", propertyList("<array/>"), false);
        row("no keys", propertyList("<dict/>"), true);
        row("wrong types",
            propertyList("<dict><key>themeColor</key><integer>1</integer><key>hoverColor</key><array/>"
                         "<key>pushColor</key><true/><key>disabledColor</key><dict/>"
                         "<key>IPAddress</key><real>1</real><key>first</key><true/></dict>"),
            true);
    }
    void defaults()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const bool, isDictionary);
        QFile::remove(path());
        if (!content.isNull())
            write(content);
        const Branding branding(path());
        QCOMPARE(branding.themeColor(), u"0xDD3333"_s);
        QCOMPARE(branding.hoverColor(), u"0xF34343"_s);
        QCOMPARE(branding.pushColor(), u"0xB71B1C"_s);
        QCOMPARE(branding.disabledColor(), u"0xEF6868"_s);
        QCOMPARE(branding.presetServer(), u""_s);
        QVERIFY(branding.value(u"first"_s).isNull());
        QCOMPARE(branding.setValue(u"first"_s, u"yes"_s), isDictionary);
        QCOMPARE(QFile::exists(path()), !content.isNull());
    }

    void ownValuesAreReadAfresh()
    {
        const Branding branding(path());
        write(propertyList("<dict><key>IPAddress</key><string>one</string></dict>"));
        QCOMPARE(branding.presetServer(), u"one"_s);
        write(propertyList("<dict><key>IPAddress</key><string>two</string>"
                           "<key>themeColor</key><string>0x00FF00</string></dict>"));
        QCOMPARE(branding.presetServer(), u"two"_s);
        QCOMPARE(branding.themeColor(), u"0x00FF00"_s);
    }

    void settingOneKeyKeepsTheOthers()
    {
        write(propertyList("<dict><key>IPAddress</key><string>one</string>"
                           "<key>other</key><array><integer>7</integer></array></dict>"));
        QVERIFY(Branding(path()).setValue(u"first"_s, u"yes"_s));
        QVERIFY(testing::contentOf(path()).contains("<integer>7</integer>"));
        QCOMPARE(Branding(path()).value(u"first"_s), u"yes"_s);
        QCOMPARE(Branding(path()).presetServer(), u"one"_s);
        QVERIFY(testing::modeOf(path()) & S_IROTH);
    }

private:
    void write(const QByteArray &bytes) { QVERIFY(testing::writeFile(path(), bytes)); }
    QString path() const { return folder.filePath(u"QBOEM.plist"_s); }

    QTemporaryDir folder;
};

REGISTER_TEST(TestBranding)
#include "TestBranding.moc"
