#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/QBColor.h"

using namespace Qt::StringLiterals;

namespace
{
struct ColorText {
    const char *name;
    QString text;
    QColor color = QColor(0, 0, 0, 0); ///< clear
};

const QColor red(0xDD, 0x33, 0x33);
const QList<ColorText> colorTexts{
    {"prefix 0x", u"0xDD3333"_s, red},
    {"prefix 0X", u"0XDD3333"_s, red},
    {"hash", u"#DD3333"_s, red},
    {"digits alone, lower case", u"dd3333"_s, red},
    {"both prefixes, blanks around", u" \t0x#DD3333\r\n "_s, red},
    {"prefixes in the wrong order", u"#0xDD3333"_s},
    {"hash with three digits", u"#D33"_s},
    {"0X with five digits", u"0xDD333"_s},
    {"0X with four digits, six characters", u"0XABCD"_s},
    {"too short", u"DD333"_s},
    {"too long", u"DD33333"_s},
    {"empty", {}},
    {"blanks only", u"        "_s},
    {"second digit unreadable", u"#12345G"_s, QColor(0x12, 0x34, 0x05)},
    {"first digit unreadable", u"#1234G5"_s, QColor(0x12, 0x34, 0)},
    {"nothing readable", u"ZZZZZZ"_s, QColor(0, 0, 0)},
    {"blank inside", u"12 456"_s, QColor(0x12, 0x04, 0x56)},
    {"0X inside a pair", u"120X56"_s, QColor(0x12, 0, 0x56)},
    {"digits of other scripts", u"٣٣٣٣٣٣"_s, QColor(0, 0, 0)},
    {"huge", QString(1 << 20, u'A')},
};
} // namespace

class TestQBColor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsText_data() { testing::addCases(colorTexts); }
    void readsText()
    {
        const auto &[name, text, color] = testing::currentCase(colorTexts);
        QCOMPARE(QBColor::qbColorWithHexString(text).rgba(), color.rgba());
    }

    void readsNumbers()
    {
        QCOMPARE(QBColor::qbColorWithHex(0x123456).rgba(), qRgba(0x12, 0x34, 0x56, 0xFF));
        QCOMPARE(QBColor::qbColorWithHex(0x7F123456).rgba(), qRgba(0x12, 0x34, 0x56, 0xFF));
        const QColor half = QBColor::qbCcolorWithHex(0xFF8000, 0.5F);
        QCOMPARE(half.rgb(), qRgb(0xFF, 0x80, 0));
        QVERIFY(qAbs(half.alphaF() - 0.5F) < 0.001F);
    }
};

REGISTER_TEST(TestQBColor)
#include "TestQBColor.moc"
