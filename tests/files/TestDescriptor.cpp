#include "files/Descriptor.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

QJsonObject parsed(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class TestDescriptor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryField();
    void readsNumbersLeniently_data();
    void readsNumbersLeniently();
    void foldsCategories_data();
    void foldsCategories();
    void formatsDisplayNames();
};

void TestDescriptor::readsEveryField()
{
    const QJsonObject document = parsed(R"({"type":1,"name":"报告 \"q3\".txt","rev":"r7","doctype":3,"attr":-2,
        "docid":"qb://A/B","size":5368709120,"modified":1795000000000001,"client_mtime":1795000000000002,
        "docname":"Group\\Sub\\","otag":"o9","unknown":{"kept":[1]}})");
    QCOMPARE(Descriptor::type(document), 1);
    QCOMPARE(Descriptor::name(document), u"报告 \"q3\".txt"_s);
    QCOMPARE(Descriptor::rev(document), u"r7"_s);
    QCOMPARE(Descriptor::docType(document), 3);
    QCOMPARE(Descriptor::attrbute(document), -2);
    QCOMPARE(Descriptor::identifier(document), u"qb://A/B"_s);
    QCOMPARE(Descriptor::size(document), 5368709120);
    QCOMPARE(Descriptor::modifiedTime(document), 1795000000000001);
    QCOMPARE(Descriptor::clientTime(document), 1795000000000002);
    QCOMPARE(Descriptor::docname(document), u"Group/Sub/"_s);
    QCOMPARE(Descriptor::otag(document), u"o9"_s);

    const QJsonObject wrong = parsed(R"({"name":7,"rev":null,"docid":[],"docname":{},"otag":true})");
    for (const QJsonObject &bare : {QJsonObject(), wrong})
        for (const auto &text :
             {Descriptor::name, Descriptor::rev, Descriptor::identifier, Descriptor::docname, Descriptor::otag})
            QVERIFY(text(bare).isNull());
    QCOMPARE(Descriptor::type({}) + Descriptor::attrbute({}) + Descriptor::modifiedTime({}), 0);
}

void TestDescriptor::readsNumbersLeniently_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<qint64>("expected");
    const auto row = [](const QByteArray &value, qint64 expected) {
        QTest::newRow(value.constData()) << value << expected;
    };
    row("12", 12);
    row("-1", -1);
    row("9007199254740993", 9007199254740993);
    row("9223372036854775807", std::numeric_limits<qint64>::max());
    row("2.9", 2);
    row("-2.9", -2);
    row("1e300", 0);
    row("-1e19", 0);
    row("\"4096\"", 4096);
    row("\"-7\"", -7);
    row("\"9007199254740993\"", 9007199254740993);
    row("\"2.9\"", 2);
    row("\"\"", 0);
    row("\"12 bytes\"", 0);
    row("\"nan\"", 0);
    row("\"inf\"", 0);
    row("\"99999999999999999999\"", 0);
    row("true", 0);
    row("null", 0);
    row("[5]", 0);
    row("{\"size\":5}", 0);
}

void TestDescriptor::readsNumbersLeniently()
{
    QFETCH(const QByteArray, value);
    QFETCH(const qint64, expected);
    QCOMPARE(Descriptor::size(parsed("{\"size\":" + value + "}")), expected);
}

void TestDescriptor::foldsCategories_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<qint64>("expected");
    const QList<qint64> expected{0, 1, 2, 3, 4, 5, 2, 0, 0};
    for (qsizetype sent = 0; sent < expected.size(); ++sent)
        QTest::addRow("%d", static_cast<int>(sent)) << QByteArray::number(sent) << expected.at(sent);
    QTest::newRow("text") << "\"6\""_ba << qint64(2);
    QTest::newRow("negative") << "-1"_ba << qint64(0);
    QTest::newRow("missing") << "null"_ba << qint64(0);
}

void TestDescriptor::foldsCategories()
{
    QFETCH(const QByteArray, sent);
    QFETCH(const qint64, expected);
    QCOMPARE(Descriptor::docType(parsed("{\"doctype\":" + sent + "}")), expected);
}

void TestDescriptor::formatsDisplayNames()
{
    QCOMPARE(Descriptor::formatDocName(u"a\\b\\\\c/d"_s), u"a/b//c/d"_s);
    QVERIFY(Descriptor::formatDocName({}).isNull());
    QVERIFY(Descriptor::formatDocName(u""_s).isNull());
    QVERIFY(Descriptor::docname({{u"docname"_s, u""_s}}).isNull());
}

REGISTER_TEST(TestDescriptor)
#include "TestDescriptor.moc"
