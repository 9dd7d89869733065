#include "platform/linux/LinuxFolders.h"
#include "platform/linux/LinuxSidebarFavorites.h"
#include "platform/linux/PlacesFiles.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/Variable.h"

#include <QTemporaryDir>

using namespace platform;
using namespace Qt::StringLiterals;

/// The lists of favourite places lose the one entry, and nothing else.
class TestSidebarFavorites : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removesBookmark_data()
    {
        const testing::Rows<QByteArray, QByteArray> row("before", "after"); // empty: left alone
        row("empty", "", "");
        row("labelled", "file:///a A\nfile:///x Quillbox\nfile:///b\n", "file:///a A\nfile:///b\n");
        row("named by its address", "file:///Volumes/Quillbox\nfile:///b\n", "file:///b\n");
        row("trailing slash", "x\nfile:///Volumes/Quillbox/\n", "x\n");
        row("percent", "x\nfile:///Quill%62ox\n", "x\n");
        row("first only", "a:/1 Quillbox\na:/2 Quillbox\n", "a:/2 Quillbox\n");
        row("last line unended", "x y\na:/1 Quillbox", "x y\n");
        row("foreign line ends", "x y\r\na:/1 Quillbox\n\n z\xff\n", "x y\r\n\n z\xff\n");
        row("other label", "file:///Volumes/Quillbox Mine\n", "");
        row("other case", "file:///quillbox\nfile:///x quillbox\n", "");
        row("part", "file:///Quillbox%20\nfile:///x My Quillbox\nfile:///x Quillbox \n", "");
    }
    void removesBookmark()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        const auto result = withoutBookmark(before, u"Quillbox"_s);
        QCOMPARE(result.has_value(), !after.isEmpty());
        QCOMPARE(result.value_or(QByteArray()), after);
    }

    void removesPlace_data()
    {
        const testing::Rows<QByteArray, QByteArray> row("before", "after"); // null: left alone
        const QByteArray wanted("\n <bookmark href=\"file:///Volumes/Quillbox\">\n  <title>Quillbox</title>\n"
                                "  <info><k:icon name='a>b'/></info>\n </bookmark>");
        const QByteArray other("\n <bookmark href='x'><title>Other</title></bookmark>");
        row("alone", wanted, "");
        row("between others", other + wanted + other, other + other);
        row("first only", wanted + wanted, wanted);
        row("in a folder", "<folder>" + wanted + "</folder>" + other, "<folder></folder>" + other);
        row("entities", "<bookmark><title>Quill&#98;ox</title></bookmark>", "");
        row("character data", "\t<bookmark><title><![CDATA[Quillbox]]></title></bookmark>", "\t");
        row("comment first", "<!--" + wanted + "-->" + wanted, "<!--" + wanted + "-->");
        row("tag in a value", "<bookmark href='/bookmark>'><title>Quillbox</title></bookmark>" + other, other);
        row("empty entries", "<bookmark/><bookmark href='a'/>" + wanted, "<bookmark/><bookmark href='a'/>");
        row("other names", other + "<bookmark><title>quillbox</title></bookmark>", {});
        row("title deeper", "<bookmark><info><title>Quillbox</title></info></bookmark>", {});
        row("other element", "<bookmarks><title>Quillbox</title></bookmarks>", {});
        row("not well-formed", wanted + "<open>", {});
    }
    void removesPlace()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        const auto document = [](const QByteArray &places) {
            return "<?xml version=\"1.0\"?>\n<!DOCTYPE xbel>\n<xbel xmlns:k=\"x\">\n <info/>" + places + "\n</xbel>\n";
        };
        const auto result = withoutPlace(document(before), u"Quillbox"_s);
        QCOMPARE(result.has_value(), !after.isNull());
        QCOMPARE(result.value_or(document(after)), document(after));
    }

    void addsBookmark_data()
    {
        const testing::Rows<QByteArray, QByteArray> row("before", "after"); // null: left alone
        row("empty", "", "file:///v Quillbox\n");
        row("last line unended", "a:/1\r\nx y", "a:/1\r\nx y\nfile:///v Quillbox\n");
        row("there", "a:/1\nfile:///elsewhere Quillbox", {});
    }
    void addsBookmark()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        const auto result = withBookmark(before, u"Quillbox"_s, "file:///v");
        QCOMPARE(result.has_value(), !after.isNull());
        QCOMPARE(result.value_or(QByteArray()), after);
    }

    void addsPlace_data()
    {
        const testing::Rows<QByteArray, bool> row("document", "adds");
        row("empty list", "<xbel></xbel>", true);
        row("others, a comment behind", "<?xml version='1.0'?>\n<xbel>\n <info/>\n</xbel>\n<!-- end -->\n", true);
        row("there", "<xbel><bookmark><title>A &amp; B</title></bookmark></xbel>", false);
        row("not well-formed", "<xbel><open></xbel>", false);
        row("another document", "<html/>", false);
        row("nothing", "", false);
    }
    void addsPlace()
    {
        QFETCH(QByteArray, document);
        QFETCH(bool, adds);
        const auto result = withPlace(document, u"A & B"_s, "file:///v/\"&");
        QCOMPARE(result.has_value(), adds);
        if (!adds)
            return;
        QVERIFY(result->contains("<bookmark href=\"file:///v/&quot;&amp;\">\n  <title>A &amp; B</title>"));
        QVERIFY(withoutPlace(*result, u"A & B"_s));
    }

    void editsBothFiles()
    {
        QTemporaryDir folder;
        const testing::Variable configuration("XDG_CONFIG_HOME", folder.filePath(u"c"_s));
        const testing::Variable data("XDG_DATA_HOME", folder.filePath(u"d"_s));
        const QString bookmarks = folder.filePath(u"c/gtk-3.0/bookmarks"_s);
        const QString places = folder.filePath(u"d/user-places.xbel"_s);
        const LinuxFolders folders;
        LinuxSidebarFavorites sidebar(folders);
        sidebar.removeFirstNamed(u"Quillbox"_s); // neither file exists
        QVERIFY(!QFile::exists(bookmarks) && !QFile::exists(places));
        sidebar.add(u"Quillbox"_s, u"/v v"_s); // nor the folders of a desktop that keeps such lists
        QVERIFY(!QFile::exists(bookmarks) && !QFile::exists(places));
        QVERIFY(QDir().mkpath(folder.filePath(u"c/gtk-3.0"_s)));
        sidebar.add(u"Quillbox"_s, u"/v v"_s);
        QCOMPARE(testing::contentOf(bookmarks), "file:///v%20v Quillbox\n"_ba);
        QVERIFY(!QFile::exists(places));
        QVERIFY(testing::writeFile(bookmarks, "a:/1 Quillbox\na:/2\n", 0600));
        QVERIFY(testing::writeFile(places, "<xbel><bookmark><title>Quillbox</title></bookmark></xbel>", 0644));
        sidebar.removeFirstNamed(u"Quillbox"_s);
        QCOMPARE(testing::contentOf(bookmarks), "a:/2\n"_ba);
        QCOMPARE(testing::contentOf(places), "<xbel></xbel>"_ba);
        QCOMPARE(testing::modeOf(bookmarks), 0600u);
        QCOMPARE(testing::modeOf(places), 0644u);
    }
};

REGISTER_TEST(TestSidebarFavorites)
#include "TestSidebarFavorites.moc"
