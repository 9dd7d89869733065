#include "files/QBPathIndicator.h"
#include "state/Common.h"
#include "support/TestMain.h"

#include <QTest>

class TestCommon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lockOwner_data();
    void lockOwner();
    void multipart();
    void nodes();
};

void TestCommon::lockOwner_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("regex");
    QTest::addColumn<QString>("owner");
    const QString ascii = QStringLiteral("locked by\\s*(.*)\\(");
    const QString wide = QStringLiteral("locked by\\s*(.*)（");
    const QString trimmed = QStringLiteral("locked by\\s*(.*?)\\s*（");
    QTest::newRow("ascii") << QStringLiteral("file is locked by  Anna(anna@x)") << ascii << QStringLiteral("Anna");
    QTest::newRow("ascii, blank kept") << QStringLiteral("locked by Anna (a)") << ascii << QStringLiteral("Anna ");
    QTest::newRow("last parenthesis") << QStringLiteral("locked by A(b)(c)") << ascii << QStringLiteral("A(b)");
    QTest::newRow("full width") << QStringLiteral("locked by 王小明（wang）") << wide << QStringLiteral("王小明");
    QTest::newRow("trimmed") << QStringLiteral("locked by 王 小明 （wang）") << trimmed << QStringLiteral("王 小明");
    QTest::newRow("wide blank") << QStringLiteral("locked by　王（wang）") << wide << QStringLiteral("王");
    QTest::newRow("other parenthesis") << QStringLiteral("locked by 王（wang）") << ascii << QString();
    QTest::newRow("no match") << QStringLiteral("nobody") << ascii << QString();
    QTest::newRow("null text") << QString() << ascii << QString();
    QTest::newRow("no group") << QStringLiteral("locked") << QStringLiteral("locked") << QString();
    QTest::newRow("broken expression") << QStringLiteral("a(") << QStringLiteral("(") << QString();
}

void TestCommon::lockOwner()
{
    QFETCH(const QString, text);
    QFETCH(const QString, regex);
    QFETCH(const QString, owner);
    QCOMPARE(Common::catchValue(text, regex), owner);
    QCOMPARE(Common::catchValue(text, regex).isNull(), owner.isNull());
}

void TestCommon::multipart()
{
    const QByteArray data("\r\n--\0bytes", 10);
    QCOMPARE(Common::getDataWithBoundary(QStringLiteral("B16"), data, "{\"docid\":1}"),
             "--B16\r\n\r\n{\"docid\":1}\r\n--B16\r\n\r\n" + data + "\r\n--B16--");
    QCOMPARE(Common::getDataWithBoundary(QStringLiteral("B"), {}, "{}"),
             QByteArray("--B\r\n\r\n{}\r\n--B\r\n\r\n\r\n--B--"));
}

void TestCommon::nodes()
{
    const QString root = Common::getRootPath();
    QCOMPARE(root, QBPathIndicator::pathForQuillboxVolume());
    QVERIFY(Common::isUndeleteNode(root));
    QVERIFY(Common::isUndeleteNode(root + QStringLiteral("/")));
    QVERIFY(Common::isUndeleteNode(root + QStringLiteral("/MyDocuments.localized")));
    QVERIFY(!Common::isUndeleteNode(root + QStringLiteral("/MyDocuments.localized/a")));
    QVERIFY(!Common::isUndeleteNode(QStringLiteral("/elsewhere/a")));
    QVERIFY(Common::isParentPathSame(QStringLiteral("/a/b"), QStringLiteral("/a//c/")));
    QVERIFY(!Common::isParentPathSame(QStringLiteral("/a/b"), QStringLiteral("/a/b/c")));
}

REGISTER_TEST(TestCommon)
#include "TestCommon.moc"
