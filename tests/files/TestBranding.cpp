#include "files/Branding.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestBranding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults_data();
    void defaults();
    void ownValuesAreReadAfresh();
    void settingOneKeyKeepsTheOthers();

private:
    void write(const QByteArray &bytes)
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QString path() const { return folder.filePath(QStringLiteral("QBOEM.plist")); }

    QTemporaryDir folder;
};

void TestBranding::defaults_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isDictionary");
    QTest::newRow("missing") << QByteArray() << false;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("garbage") << QByteArray("\x00\xFF{{{", 5) << false;
    QTest::newRow("cut") << QByteArray("<plist version=\"1.0\"><dict><key>themeColor</key><stri") << false;
    QTest::newRow("no dictionary") << QByteArray("<plist version=\"1.0\"><array/></plist>") << false;
    QTest::newRow("no keys") << QByteArray("<plist version=\"1.0\"><dict/></plist>") << true;
    QTest::newRow("wrong types") << QByteArray("<plist version=\"1.0\"><dict><key>themeColor</key><integer>1</integer>"
                                               "<key>hoverColor</key><array/><key>pushColor</key><true/>"
                                               "<key>disabledColor</key><dict/><key>IPAddress</key><real>1</real>"
                                               "<key>first</key><true/></dict></plist>")
                                 << true;
}

void TestBranding::defaults()
{
    QFETCH(const QByteArray, content);
    QFETCH(const bool, isDictionary);
    QFile::remove(path());
    if (!content.isNull())
        write(content);
    const Branding branding(path());
    QCOMPARE(branding.themeColor(), QStringLiteral("0xDD3333"));
    QCOMPARE(branding.hoverColor(), QStringLiteral("0xF34343"));
    QCOMPARE(branding.pushColor(), QStringLiteral("0xB71B1C"));
    QCOMPARE(branding.disabledColor(), QStringLiteral("0xEF6868"));
    QCOMPARE(branding.presetServer(), QStringLiteral(""));
    QVERIFY(branding.value(QStringLiteral("first")).isNull());
    QCOMPARE(branding.setValue(QStringLiteral("first"), QStringLiteral("yes")), isDictionary);
    QCOMPARE(QFile::exists(path()), !content.isNull());
}

void TestBranding::ownValuesAreReadAfresh()
{
    write("<plist version=\"1.0\"><dict><key>IPAddress</key><string>one</string></dict></plist>");
    const Branding branding(path());
    QCOMPARE(branding.presetServer(), QStringLiteral("one"));
    write("<plist version=\"1.0\"><dict><key>IPAddress</key><string>two</string>"
          "<key>themeColor</key><string>0x00FF00</string></dict></plist>");
    QCOMPARE(branding.presetServer(), QStringLiteral("two"));
    QCOMPARE(branding.themeColor(), QStringLiteral("0x00FF00"));
}

void TestBranding::settingOneKeyKeepsTheOthers()
{
    write("<plist version=\"1.0\"><dict><key>IPAddress</key><string>one</string>"
          "<key>other</key><array><integer>7</integer></array></dict></plist>");
    QVERIFY(Branding(path()).setValue(QStringLiteral("first"), QStringLiteral("yes")));
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("<integer>7</integer>"));
    QCOMPARE(Branding(path()).value(QStringLiteral("first")), QStringLiteral("yes"));
    QCOMPARE(Branding(path()).presetServer(), QStringLiteral("one"));
    QVERIFY(file.permissions() & QFileDevice::ReadOther);
}

REGISTER_TEST(TestBranding)
#include "TestBranding.moc"
