#include "files/QBFileSystemGuard.h"
#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using testing::propertyList;

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
    return propertyList("<dict><key>noSync</key><array>" + noSync + "</array><key>forbidden</key><array>" + forbidden +
                        "</array></dict>");
}

} // namespace

class TestFileSystemGuard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Whether a name begins with, ends with, contains or equals the label, by the types 0 to 3; others never match.
    void comparesExactly_data()
    {
        const testing::Rows<QString, QList<int>> row("name", "types");
        row("~$a", QList<int>{0, 2});
        row("a~$", QList<int>{1, 2});
        row("a~$b", QList<int>{2});
        row("~$", QList<int>{0, 1, 2, 3});
        row("$~", QList<int>());
        row("", QList<int>());
    }
    void comparesExactly()
    {
        QFETCH(const QString, name);
        QFETCH(const QList<int>, types);
        for (int type = -1; type <= 8; ++type) {
            const auto predicate = QBFileSystemPredicate::predicateWithLabel(u"~$"_s, type);
            QVERIFY2(predicate.matches(name) == types.contains(type), QByteArray::number(type).constData());
            QCOMPARE(predicate.label(), u"~$"_s);
            QCOMPARE(predicate.type(), type);
            QVERIFY(!QBFileSystemPredicate(u"ABC"_s, type).matches(u"abc"_s));
        }
    }

    void letsForbiddenWin()
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

    void skipsMalformedRules()
    {
        const auto guard = guardOf(rules(
            rule("", 2) + rule("<integer>5</integer>", "<integer>0</integer>") + "<string>loose</string><array/>" +
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

    void survivesBadFiles()
    {
        for (const QByteArray &content :
             {""_ba, QByteArray(500, '\xfe'), rules(rule("a", 0), "").left(120), propertyList("<array/>"),
              propertyList("<dict/>"), propertyList("<dict><key>noSync</key><string>a</string></dict>")}) {
            const auto guard = guardOf(content);
            QVERIFY(guard);
            QVERIFY(guard->noSyncLabels().isEmpty() && guard->forbiddenLabels().isEmpty());
            QCOMPARE(guard->analyseNameType(u"a"_s), QBFileSystemGuard::Ordinary);
        }
    }

    void needsAFile()
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

    void shipsSensibleRules_data()
    {
        const testing::Rows<QString, int> row("names", "type");
        row("office", "~$plan.docx|~WRL0001.tmp|.~lock.a.odt#", 2);
        row("editors",
            u".#notes.org|.goutputstream-X1Y2Z3|.fuse_hidden0000|.a.txt.swp|.b.md.swp|.a.txt.swo|"
            u".c.cpp.kate-swp|.a.txt.un~"_s,
            2);
        row("metadata", ".DS_Store|._plan.docx|Thumbs.db|desktop.ini|.directory|Icon\r", 2);
        row("downloads", "a.pdf.crdownload|a.pdf.part|a.pdf.download|a.pdf.partial|.com.google.Chrome.x1Y2", 2);
        row("forbidden", ".Trash-1000|.Trashes|$RECYCLE.BIN|System Volume Information|.fseventsd", 1);
        row("people's own",
            u"~|a~|notes.txt~|macro.swp|.macro.swp|partial|x.tmp|.|..|.hidden|.git|#1 "
            u"plan.txt|$a|a~$b|a.part1.rar|part|Trash|"
            u"thumbs.DB|My desktop.ini|.DS_Store.txt|报告.docx|_.txt|.lock|a.lock|Icon|.download.txt"_s,
            0);
    }
    void shipsSensibleRules()
    {
        QFETCH(const QString, names);
        QFETCH(const int, type);
        const auto guard = QBFileSystemGuard::initWithPath(QStringLiteral(QUILLBOX_GUARD_RULES));
        QVERIFY(guard);
        for (const QString &name : names.split(u'|'))
            QVERIFY2(guard->analyseNameType(name) == type, qPrintable(name));
    }

private:
    std::unique_ptr<QBFileSystemGuard> guardOf(const QByteArray &content)
    {
        const QString path = folder.filePath(u"rules.plist"_s);
        if (!testing::writeFile(path, content))
            qFatal("no temporary folder");
        return QBFileSystemGuard::initWithPath(path);
    }

    QTemporaryDir folder;
};

REGISTER_TEST(TestFileSystemGuard)
#include "TestFileSystemGuard.moc"
