#include "files/QBPathIndicator.h"
#include "state/Common.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestCommon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lockOwner_data()
    {
        const testing::Rows<QString, QString, QString> row("text", "regex", "owner");
        const QString ascii = u"locked by\\s*(.*)\\("_s;
        const QString wide = u"locked by\\s*(.*)（"_s;
        const QString trimmed = u"locked by\\s*(.*?)\\s*（"_s;
        row("ascii", "file is locked by  Anna(anna@x)", ascii, "Anna");
        row("ascii, blank kept", "locked by Anna (a)", ascii, "Anna ");
        row("last parenthesis", "locked by A(b)(c)", ascii, "A(b)");
        row("full width", "locked by 王小明（wang）", wide, "王小明");
        row("trimmed", "locked by 王 小明 （wang）", trimmed, "王 小明");
        row("wide blank", "locked by　王（wang）", wide, "王");
        row("other parenthesis", "locked by 王（wang）", ascii, {});
        row("no match", "nobody", ascii, {});
        row("null text", {}, ascii, {});
        row("no group", "locked", "locked", {});
        row("broken expression", "a(", "(", {});
    }
    void lockOwner()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, regex);
        QFETCH(const QString, owner);
        QCOMPARE(Common::catchValue(text, regex), owner);
        QCOMPARE(Common::catchValue(text, regex).isNull(), owner.isNull());
    }

    void multipart()
    {
        const QByteArray data("\r\n--\0bytes", 10);
        QCOMPARE(Common::getDataWithBoundary(u"B16"_s, data, "{\"docid\":1}"),
                 "--B16\r\n\r\n{\"docid\":1}\r\n--B16\r\n\r\n" + data + "\r\n--B16--");
        QCOMPARE(Common::getDataWithBoundary(u"B"_s, {}, "{}"), QByteArray("--B\r\n\r\n{}\r\n--B\r\n\r\n\r\n--B--"));
    }

    void nodes()
    {
        const QString root = Common::getRootPath();
        QCOMPARE(root, QBPathIndicator::pathForQuillboxVolume());
        QVERIFY(Common::isUndeleteNode(root));
        QVERIFY(Common::isUndeleteNode(root + u"/"_s));
        QVERIFY(Common::isUndeleteNode(root + u"/MyDocuments.localized"_s));
        QVERIFY(!Common::isUndeleteNode(root + u"/MyDocuments.localized/a"_s));
        QVERIFY(!Common::isUndeleteNode(u"/elsewhere/a"_s));
        QVERIFY(Common::isParentPathSame(u"/a/b"_s, u"/a//c/"_s));
        QVERIFY(!Common::isParentPathSame(u"/a/b"_s, u"/a/b/c"_s));
    }
};

REGISTER_TEST(TestCommon)
#include "TestCommon.moc"
