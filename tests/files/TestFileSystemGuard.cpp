#include "files/QBFileSystemGuard.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

QByteArray rule(const QByteArray &label, const QByteArray &type)
{
    return "<dict><key>label</key>" + label + "<key>type</key>" + type + "</dict>";
}

QByteArray rule(const char *label, int type)
{
    return rule("<string>" + QByteArray(label) + "</string>", "<integer>" + QByteArray::number(type) + "</integer>");
}

QByteArray rules(const QByteArray &noSync, const QByteArray &forbidden)
{
    return "<plist version=\"1.0\"><dict><key>noSync</key><array>" + noSync + "</array><key>forbidden</key><array>" +
           forbidden + "</array></dict></plist>";
}

} // namespace

class TestFileSystemGuard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comparesExactly_data();
    void comparesExactly();
    void letsForbiddenWin();
    void skipsMalformedRules();
    void survivesBadFiles_data();
    void survivesBadFiles();
    void needsAFile();
    void shipsSensibleRules_data();
    void shipsSensibleRules();

private:
    std::unique_ptr<QBFileSystemGuard> guardOf(const QByteArray &content)
    {
        const QString path = folder.filePath(u"rules.plist"_s);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no temporary folder");
        file.close();
        return QBFileSystemGuard::initWithPath(path);
    }

    QTemporaryDir folder;
};

void TestFileSystemGuard::comparesExactly_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("matches");
    const auto row = [](int type, const QString &name, bool matches) {
        QTest::addRow("%d %s", type, qPrintable(name)) << type << name << matches;
    };
    for (int type = -1; type <= 8; ++type) {
        row(type, u"~$a"_s, type == 0 || type == 2);
        row(type, u"a~$"_s, type == 1 || type == 2);
        row(type, u"a~$b"_s, type == 2);
        row(type, u"~$"_s, type >= 0 && type <= 3);
        row(type, u"$~"_s, false);
        row(type, u""_s, false);
    }
}

void TestFileSystemGuard::comparesExactly()
{
    QFETCH(const int, type);
    QFETCH(const QString, name);
    QFETCH(const bool, matches);
    const auto predicate = QBFileSystemPredicate::predicateWithLabel(u"~$"_s, type);
    QCOMPARE(predicate.matches(name), matches);
    QCOMPARE(predicate.label(), u"~$"_s);
    QCOMPARE(predicate.type(), type);
    QVERIFY(!QBFileSystemPredicate(u"ABC"_s, type).matches(u"abc"_s));
}

void TestFileSystemGuard::letsForbiddenWin()
{
    const auto guard = guardOf(rules(rule("both", 2) + rule("local", 0), rule("both", 3) + rule("never", 7)));
    QVERIFY(guard);
    QCOMPARE(guard->analyseNameType(u"both"_s), QBFileSystemGuard::Forbidden);
    QCOMPARE(guard->analyseNameType(u"both of them"_s), QBFileSystemGuard::NoSync);
    QCOMPARE(guard->analyseNameType(u"local.txt"_s), QBFileSystemGuard::NoSync);
    QCOMPARE(guard->analyseNameType(u"never"_s), QBFileSystemGuard::Ordinary);
    QCOMPARE(guard->analyseNameType(u""_s), QBFileSystemGuard::Ordinary);
    QCOMPARE(guard->noSyncLabels().size(), 2);
    QCOMPARE(guard->noSyncLabels().first().label(), u"both"_s);
    QCOMPARE(guard->forbiddenLabels().last().type(), 7);
}

void TestFileSystemGuard::skipsMalformedRules()
{
    const auto guard = guardOf(
        rules(rule("", 2) + rule("<integer>5</integer>", "<integer>0</integer>") + "<string>loose</string><array/>" +
                  "<dict/>" + rule("<string>text type</string>", "<string>3</string>") +
                  rule("<string>odd type</string>", "<array/>") + "<dict><key>label</key><string>bare</string></dict>",
              ""));
    QVERIFY(guard);
    QCOMPARE(guard->noSyncLabels().size(), 3);
    QCOMPARE(guard->analyseNameType(u"text type"_s), QBFileSystemGuard::NoSync);
    QCOMPARE(guard->analyseNameType(u"text type!"_s), QBFileSystemGuard::Ordinary);
    QCOMPARE(guard->analyseNameType(u"bare and more"_s), QBFileSystemGuard::NoSync);
    QVERIFY(guard->forbiddenLabels().isEmpty());
}

void TestFileSystemGuard::survivesBadFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << ""_ba;
    QTest::newRow("garbage") << QByteArray(500, '\xfe');
    QTest::newRow("cut") << rules(rule("a", 0), "").left(90);
    QTest::newRow("array root") << "<plist version=\"1.0\"><array/></plist>"_ba;
    QTest::newRow("no lists") << "<plist version=\"1.0\"><dict/></plist>"_ba;
    QTest::newRow("text for a list")
        << "<plist version=\"1.0\"><dict><key>noSync</key><string>a</string></dict></plist>"_ba;
}

void TestFileSystemGuard::survivesBadFiles()
{
    QFETCH(const QByteArray, content);
    const auto guard = guardOf(content);
    QVERIFY(guard);
    QVERIFY(guard->noSyncLabels().isEmpty() && guard->forbiddenLabels().isEmpty());
    QCOMPARE(guard->analyseNameType(u"a"_s), QBFileSystemGuard::Ordinary);
}

void TestFileSystemGuard::needsAFile()
{
    testing::LogRecorder log;
    QVERIFY(!QBFileSystemGuard::initWithPath({}));
    QVERIFY(!QBFileSystemGuard::initWithPath(folder.filePath(u"missing.plist"_s)));
    QVERIFY(!QBFileSystemGuard::initWithPath(folder.path()));
    QVERIFY2(!QBFileSystemGuard::defaultGuard(), "no bundle, no rules");
    QVERIFY(log.lines().isEmpty());
    QBFileSystemGuard bare;
    bare.perser();
    QVERIFY(log.contains(u"ERROR: QBFileSystemGuard.plist not exist!!"_s));
    QCOMPARE(bare.analyseNameType(u"a"_s), QBFileSystemGuard::Ordinary);
}

void TestFileSystemGuard::shipsSensibleRules_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<int>("type");
    QTest::newRow("office") << u"~$plan.docx|~WRL0001.tmp|.~lock.a.odt#"_s << 2;
    QTest::newRow("editors") << u".#notes.org|.goutputstream-X1Y2Z3|.fuse_hidden0000|.a.txt.swp|.b.md.swp|.a.txt.swo|"
                                u".c.cpp.kate-swp|.a.txt.un~"_s
                             << 2;
    QTest::newRow("metadata") << u".DS_Store|._plan.docx|Thumbs.db|desktop.ini|.directory|Icon\r"_s << 2;
    QTest::newRow("downloads") << u"a.pdf.crdownload|a.pdf.part|a.pdf.download|a.pdf.partial|.com.google.Chrome.x1Y2"_s
                               << 2;
    QTest::newRow("forbidden") << u".Trash-1000|.Trashes|$RECYCLE.BIN|System Volume Information|.fseventsd"_s << 1;
    QTest::newRow("people's own")
        << u"~|a~|notes.txt~|macro.swp|.macro.swp|partial|x.tmp|.|..|.hidden|.git|#1 "
           u"plan.txt|$a|a~$b|a.part1.rar|part|Trash|"
           u"thumbs.DB|My desktop.ini|.DS_Store.txt|报告.docx|_.txt|.lock|a.lock|Icon|.download.txt"_s
        << 0;
}

void TestFileSystemGuard::shipsSensibleRules()
{
    QFETCH(const QString, names);
    QFETCH(const int, type);
    const auto guard = QBFileSystemGuard::initWithPath(QStringLiteral(QUILLBOX_GUARD_RULES));
    QVERIFY(guard);
    for (const QString &name : names.split(u'|'))
        QVERIFY2(guard->analyseNameType(name) == type, qPrintable(name));
}

REGISTER_TEST(TestFileSystemGuard)
#include "TestFileSystemGuard.moc"
