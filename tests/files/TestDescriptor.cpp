#include "files/Descriptor.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

QByteArray everyField();

QJsonObject parsed(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class TestDescriptor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryField()
    {
        const QJsonObject document = parsed(everyField());
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

    void readsNumbersLeniently_data()
    {
        const testing::Rows<QByteArray, qint64> row("value", "expected");
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
    void readsNumbersLeniently()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const qint64, expected);
        QCOMPARE(Descriptor::size(parsed("{\"size\":" + value + "}")), expected);
    }

    void foldsCategories()
    {
        const auto docType = [](const QByteArray &sent) {
            return Descriptor::docType(parsed("{\"doctype\":" + sent + "}"));
        };
        const QList<qint64> expected{0, 1, 2, 3, 4, 5, 2, 0, 0};
        for (qsizetype sent = 0; sent < expected.size(); ++sent)
            QCOMPARE(docType(QByteArray::number(sent)), expected.at(sent));
        QCOMPARE(docType("\"6\""), 2);
        QCOMPARE(docType("-1"), 0);
        QCOMPARE(docType("null"), 0);
    }

    void formatsDisplayNames()
    {
        QCOMPARE(Descriptor::formatDocName(u"a\\b\\\\c/d"_s), u"a/b//c/d"_s);
        QVERIFY(Descriptor::formatDocName(u""_s).isNull());
        QVERIFY(Descriptor::docname({{u"docname"_s, u""_s}}).isNull());
    }
};

namespace
{

QByteArray everyField()
{
    return R"({"type":1,"name":"报告 \"q3\".txt","rev":"r7","doctype":3,"attr":-2,
    "docid":"qb://A/B","size":5368709120,"modified":1795000000000001,"client_mtime":1795000000000002,
    "docname":"Group\\Sub\\","otag":"o9","unknown":{"kept":[1]}})";
}

} // namespace

REGISTER_TEST(TestDescriptor)
#include "TestDescriptor.moc"
