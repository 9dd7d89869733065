#include "support/TestMain.h"
#include "ui/QBColor.h"

#include <QTest>

class TestQBColor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsText_data();
    void readsText();
    void readsNumbers();
};

REGISTER_TEST(TestQBColor)

void TestQBColor::readsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");

    const QColor red(0xDD, 0x33, 0x33);
    const QColor clear(0, 0, 0, 0);
    QTest::newRow("prefix 0x") << QStringLiteral("0xDD3333") << red;
    QTest::newRow("prefix 0X") << QStringLiteral("0XDD3333") << red;
    QTest::newRow("hash") << QStringLiteral("#DD3333") << red;
    QTest::newRow("digits alone, lower case") << QStringLiteral("dd3333") << red;
    QTest::newRow("both prefixes, blanks around") << QStringLiteral(" \t0x#DD3333\r\n ") << red;
    QTest::newRow("prefixes in the wrong order") << QStringLiteral("#0xDD3333") << clear;
    QTest::newRow("hash with three digits") << QStringLiteral("#D33") << clear;
    QTest::newRow("0X with five digits") << QStringLiteral("0xDD333") << clear;
    QTest::newRow("0X with four digits, six characters") << QStringLiteral("0XABCD") << clear;
    QTest::newRow("too short") << QStringLiteral("DD333") << clear;
    QTest::newRow("too long") << QStringLiteral("DD33333") << clear;
    QTest::newRow("empty") << QString() << clear;
    QTest::newRow("blanks only") << QStringLiteral("        ") << clear;
    QTest::newRow("second digit unreadable") << QStringLiteral("#12345G") << QColor(0x12, 0x34, 0x05);
    QTest::newRow("first digit unreadable") << QStringLiteral("#1234G5") << QColor(0x12, 0x34, 0);
    QTest::newRow("nothing readable") << QStringLiteral("ZZZZZZ") << QColor(0, 0, 0);
    QTest::newRow("blank inside") << QStringLiteral("12 456") << QColor(0x12, 0x04, 0x56);
    QTest::newRow("0X inside a pair") << QStringLiteral("120X56") << QColor(0x12, 0, 0x56);
    QTest::newRow("digits of other scripts") << QStringLiteral("٣٣٣٣٣٣") << QColor(0, 0, 0);
    QTest::newRow("huge") << QString(1 << 20, QLatin1Char('A')) << clear;
}

void TestQBColor::readsText()
{
    QFETCH(QString, text);
    QFETCH(QColor, color);
    QCOMPARE(QBColor::qbColorWithHexString(text).rgba(), color.rgba());
}

void TestQBColor::readsNumbers()
{
    QCOMPARE(QBColor::qbColorWithHex(0x123456).rgba(), qRgba(0x12, 0x34, 0x56, 0xFF));
    QCOMPARE(QBColor::qbColorWithHex(0x7F123456).rgba(), qRgba(0x12, 0x34, 0x56, 0xFF));
    const QColor half = QBColor::qbCcolorWithHex(0xFF8000, 0.5F);
    QCOMPARE(half.redF(), 1.0F);
    QCOMPARE(half.green(), 0x80);
    QCOMPARE(half.blueF(), 0.0F);
    QVERIFY(qAbs(half.alphaF() - 0.5F) < 0.001F);
}

#include "TestQBColor.moc"
