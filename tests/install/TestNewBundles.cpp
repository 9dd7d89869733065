#include "InstallScene.h"
#include "install/BundleCopy.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

class TestNewBundles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void needsThreeArguments()
    {
        QVERIFY(updateRequest({u"a"_s, u"b"_s, u"c"_s}));
        QVERIFY(!updateRequest({}));
        QVERIFY(!updateRequest({u"a"_s, u"b"_s}));
        QVERIFY(!updateRequest({u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
    }

    void paths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("usable");
        const auto row = [](const QString &path, bool usable) {
            QTest::newRow(qPrintable(path.left(40).toHtmlEscaped())) << path << usable;
        };
        row(u"/a b/\"c\"; $(d)/中.app"_s, true);
        for (const char *path : {"", "/", "a.app", "./a", "/a/../b", "/a/./b", "/a//b", "/a/", "/..", "~/a"})
            row(QString::fromUtf8(path), false);
        row(u"/a\0b"_s, false);
        row(u'/' + QString(5000, u'x'), false);
    }
    void paths()
    {
        QFETCH(QString, path);
        QTEST(problemWithPath(path).isNull(), "usable");
    }

    void bundles()
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

    void images()
    {
        const QTemporaryDir folder;
        const QString image = folder.filePath(u"a 'b'.dmg"_s);
        writeFile(image, "");
        QVERIFY(problemWithImage(image).isNull());
        const QString link = folder.filePath(u"link"_s);
        QVERIFY(QFile::link(image, link));
        for (const QString &bad : {link, folder.path(), folder.filePath(u"none"_s), u"/dev/null"_s})
            QVERIFY2(!problemWithImage(bad).isNull(), qPrintable(bad));
    }

    void links_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("depth");
        QTest::addColumn<bool>("inside");
        const auto row = [](const char *target, int depth, bool inside) {
            QTest::addRow("%s at %d", target, depth) << QString::fromLatin1(target) << depth << inside;
        };
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
    void links()
    {
        QFETCH(QString, target);
        QFETCH(int, depth);
        QTEST(leadsInside(target, depth), "inside");
    }

    void copiesWithRights()
    {
        const QTemporaryDir folder;
        const QString from = folder.filePath(u"from"_s);
        writeFile(from + "/run"_L1, "x", 04777);
        writeFile(from + "/read"_L1, "y", 0400);
        const QString to = folder.filePath(u"to"_s);
        QVERIFY(copyBundle(from, to).isNull());
        QCOMPARE(QFileInfo(to + "/run"_L1).permissions() & QFile::Permissions(0x777),
                 QFile::Permissions(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser | QFile::ReadGroup |
                                    QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
        QVERIFY(QFileInfo(to + "/read"_L1).isWritable());
        QVERIFY(!copyBundle(from, to).isNull()); // never over something
        QString deep = from;
        for (int level = 0; level < 70; ++level)
            deep += "/d"_L1;
        QVERIFY(QDir().mkpath(deep));
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
