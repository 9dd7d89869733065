#include "InstallScene.h"
#include "install/BundleCopy.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

class TestNewBundles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsArguments()
    {
        const QStringList arguments{u"a"_s, u"b"_s, u"c"_s, u"d"_s};
        for (const int few : {0, 2, 4})
            QVERIFY(!updateRequest(arguments.first(few)));
        QVERIFY(!updateRequest(arguments.first(3))->isResumption());
        QVERIFY(updateRequest(arguments.first(1))->isResumption());
    }

    void judgesPaths()
    {
        QVERIFY(problemWithPath(u"/a b/\"c\"; $(d)/中.app"_s).isNull());
        for (const QString &path : {u""_s, u"/"_s, u"a.app"_s, u"./a"_s, u"/a/../b"_s, u"/a/./b"_s, u"/a//b"_s,
                                    u"/a/"_s, u"/.."_s, u"~/a"_s, u"/a\0b"_s, u'/' + QString(5000, u'x')})
            QVERIFY2(!problemWithPath(path).isNull(), qPrintable(path));
    }

    void judgesBundles()
    {
        const QTemporaryDir folder;
        const QString good = folder.filePath(u"Quillbox.app"_s);
        makeBundle(good, "1.0");
        QVERIFY2(problemWithBundle(good).isNull(), qPrintable(problemWithBundle(good)));
        const QString link = folder.filePath(u"Link.app"_s);
        QVERIFY(QFile::link(good, link));
        const QString otherName = folder.filePath(u"Quillbox"_s);
        makeBundle(otherName, "1.0");
        for (const QString &bad : {link, otherName, folder.filePath(u"None.app"_s), good + "/Contents/Info.plist"_L1,
                                   good + "/Contents/.."_L1, u"/usr"_s})
            QVERIFY2(!problemWithBundle(bad).isNull(), qPrintable(bad));
    }

    void judgesImages()
    {
        const QTemporaryDir folder;
        const QString image = folder.filePath(u"a 'b'.dmg"_s);
        QVERIFY(writeFile(image, ""));
        QVERIFY(problemWithImage(image).isNull());
        const QString link = folder.filePath(u"link"_s);
        QVERIFY(QFile::link(image, link));
        for (const QString &bad : {link, folder.path(), folder.filePath(u"none"_s), u"/dev/null"_s})
            QVERIFY2(!problemWithImage(bad).isNull(), qPrintable(bad));
    }

    void judgesLinks_data()
    {
        const Rows<QString, int, bool> row("target", "depth", "inside");
        row("a/b", 0, true);
        row("../a", 1, true);
        row("../../a", 2, true);
        row("..", 1, true);
        row("..", 0, false);
        row("../../a", 1, false);
        row("a/../../b", 1, false);
        row("a/../b", 5, false); // "a" may be a link itself
        row("./../b", 1, false);
        row("/etc", 9, false);
        row("", 3, false);
    }
    void judgesLinks()
    {
        QFETCH(QString, target);
        QFETCH(int, depth);
        QTEST(leadsInside(target, depth), "inside");
    }

    void copiesWithRights()
    {
        const QTemporaryDir folder;
        const QString from = folder.filePath(u"from"_s);
        const QString to = folder.filePath(u"to"_s);
        QVERIFY(writeFile(from + "/run"_L1, "x", 04777) && writeFile(from + "/read"_L1, "y", 0400));
        QVERIFY(copyBundle(from, to).isNull());
        QCOMPARE(modeOf(to + "/run"_L1), 0755U);
        QCOMPARE(modeOf(to + "/read"_L1), 0600U);
        QVERIFY(!copyBundle(from, to).isNull()); // never over something
        QVERIFY(QDir().mkpath(from + u"/d"_s.repeated(70)));
        QVERIFY(!copyBundle(from, folder.filePath(u"deep"_s)).isNull());
    }

    void readsTheTool()
    {
        const QByteArray text("framework : 1\nimage-path      : /d/a : b.dmg\n/dev/disk2s1\tfs\t/Volumes/Quillbox 1\n"
                              "squashfs\t/Volumes/b\nsquashfs\t/Elsewhere/c\nsquashfs /Volumes/d\n\n");
        const QList<AttachedImage> images = attachedImages(text, u"/Volumes"_s);
        QCOMPARE(images.size(), 2);
        QCOMPARE(images.at(0).image, u"/d/a : b.dmg"_s);
        QCOMPARE(images.at(0).mountPoint, u"/Volumes/Quillbox 1"_s);
        QVERIFY(images.at(1).image.isNull());
        QCOMPARE(images.at(1).mountPoint, u"/Volumes/b"_s);
        QVERIFY(attachedImages({}, u"/Volumes"_s).isEmpty());
    }
};

REGISTER_TEST(TestNewBundles)
#include "TestNewBundles.moc"
