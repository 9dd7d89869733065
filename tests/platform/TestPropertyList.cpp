#include "platform/PropertyList.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QTemporaryDir>

using namespace platform;
using namespace Qt::StringLiterals;

using testing::propertyList;

namespace
{

QByteArray nested(int levels)
{
    return propertyList(QByteArray("<array>").repeated(levels) + QByteArray("</array>").repeated(levels));
}

/// A binary list of `levels` arrays, each of which names the next one `fan` times; the innermost is empty.
QByteArray binary(int levels, int fan)
{
    QByteArray bytes("bplist00");
    QByteArray offsets;
    for (int level = 0; level <= levels; ++level) {
        offsets += static_cast<char>(bytes.size() >> 8);
        offsets += static_cast<char>(bytes.size());
        const int children = level < levels ? fan : 0;
        bytes += static_cast<char>(0xA0 | children);
        for (int child = 0; child < children; ++child) {
            bytes += static_cast<char>((level + 1) >> 8);
            bytes += static_cast<char>(level + 1);
        }
    }
    const auto table = static_cast<quint16>(bytes.size());
    bytes += offsets + QByteArray(6, '\0') + '\2' + '\2' + QByteArray(6, '\0');
    bytes += static_cast<char>((levels + 1) >> 8);
    bytes += static_cast<char>(levels + 1);
    bytes += QByteArray(8, '\0') + QByteArray(6, '\0');
    bytes += static_cast<char>(table >> 8);
    bytes += static_cast<char>(table);
    return bytes;
}

} // namespace

class TestPropertyList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip_data()
    {
        const testing::Rows<QVariant> row("value");
        const QDateTime date(QDate(2026, 11, 22), QTime(10, 20, 30), Qt::UTC);
        row("text", u"a <b> & \"c\" 中文 \U0001F600"_s);
        row("empty text", u""_s);
        row("blank text", u"  \n "_s);
        row("true", true);
        row("false", false);
        row("zero", qint64(0));
        row("negative", qint64(-5));
        row("smallest", std::numeric_limits<qint64>::min());
        row("largest", std::numeric_limits<qint64>::max());
        row("real", 0.1);
        row("date", date);
        row("data", QByteArray("\0\1\xff", 3));
        row("empty data", QByteArray(""));
        row("empty list", QVariantList());
        row("empty dictionary", QVariantMap());
        row("nested", QVariantMap{{u"server"_s, QVariantMap{{u"authPort"_s, u"443"_s}}},
                                  {u"list"_s, QVariantList{qint64(1), u"2"_s, QVariantMap()}}});
    }
    void roundTrip()
    {
        QFETCH(QVariant, value);
        const auto back = PropertyList::parse(PropertyList::serialize(value));
        QVERIFY(back.has_value());
        QCOMPARE(back->typeId(), value.typeId());
        QCOMPARE(*back, value);
    }

    void reads_data()
    {
        const testing::Rows<QByteArray, QVariant> row("bytes", "value");
        const QByteArray doctype(
            "<!DOCTYPE plist PUBLIC \"-//x//y\" \"http://127.0.0.1/x.dtd\"><plist><string>a</string></plist>");
        row("document type", doctype, u"a"_s);
        row("comments", propertyList("<!-- </plist> --><array><!-- x --><true/></array>"), QVariantList{true});
        row("padded integer", propertyList("<integer> -7\n</integer>"), qint64(-7));
        row("wrapped data", propertyList("<data>\n\tAQ\n\tID\n</data>"), QByteArray("\1\2\3"));
        row("character data", propertyList("<string><![CDATA[<array>]]></string>"), u"<array>"_s);
        row("deepest", nested(64), [] {
            QVariant value = QVariantList();
            for (int level = 1; level < 64; ++level)
                value = QVariantList{value};
            return value;
        }());
        row("binary",
            QByteArray::fromHex("62706c6973743030d20102030451615162223fc00000137ffffffffffffffb"
                                "080d0f1116000000000000010100000000000000050000000000000000000000000000001f"),
            QVariantMap{{u"a"_s, 1.5}, {u"b"_s, qint64(0x7ffffffffffffffb)}});
        row("binary, shared children", binary(2, 2),
            QVariantList{QVariantList{QVariantList(), QVariantList()}, QVariantList{QVariantList(), QVariantList()}});
    }
    void reads()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QVariant, value);
        const auto read = PropertyList::parse(bytes);
        QVERIFY(read.has_value());
        QCOMPARE(*read, value);
    }

    void refuses_data()
    {
        const testing::Rows<QByteArray> row("bytes");
        row("nothing", {});
        row("garbage");
        row("zeros", QByteArray(4096, '\0'));
        row("another document", "<html><string>a</string></html>");
        row("no value", propertyList(""));
        row("two values", propertyList("<true/><true/>"));
        row("unknown element", propertyList("<number>1</number>"));
        row("words as integer", propertyList("<integer>abc</integer>"));
        row("integer with a tail", propertyList("<integer>12x</integer>"));
        row("empty integer", propertyList("<integer></integer>"));
        row("integer too large", propertyList("<integer>9223372036854775808</integer>"));
        row("words as real", propertyList("<real>abc</real>"));
        row("words as date", propertyList("<date>yesterday</date>"));
        row("words as data", propertyList("<data>*!*</data>"));
        row("filled boolean", propertyList("<true>x</true>"));
        row("element in text", propertyList("<string>a<true/></string>"));
        row("key without value", propertyList("<dict><key>a</key></dict>"));
        row("value without key", propertyList("<dict><true/></dict>"));
        row("bad UTF-8", propertyList("<string>\xff\xfe</string>"));
        row("entities", "<!DOCTYPE plist [<!ENTITY a \"x\">]><plist><string>&a;</string></plist>");
        row("one level too deep", nested(65));
        row("200,000 levels", nested(200'000));
        row("too large", propertyList("<string>" + QByteArray(16 * 1024 * 1024, 'a') + "</string>"));
        row("binary header alone", "bplist00");
        row("binary zeros", "bplist00" + QByteArray(64, '\0'));
        row("binary ones", "bplist00" + QByteArray(64, '\xff'));
        row("binary, one level too deep", binary(64, 1));
        row("binary, too deep", binary(3000, 1));
        row("binary, unfolds without end", binary(40, 2));
        QByteArray loop = binary(1, 1);
        loop[9] = 0;
        loop[10] = 0;
        row("binary, holds itself", loop);
    }
    void refuses()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(!PropertyList::parse(bytes).has_value());
    }

    void survivesEveryCutAndEveryFlippedByte()
    {
        const QByteArray text = PropertyList::serialize(QVariantMap{{u"a"_s, QVariantList{qint64(1), true}}});
        const QByteArray encoded = binary(3, 2);
        QVERIFY(PropertyList::parse(text).has_value());
        for (const QByteArray &whole : {text.left(text.indexOf("</plist>") + 8), encoded})
            for (qsizetype length = 0; length < whole.size(); ++length)
                QVERIFY2(!PropertyList::parse(whole.left(length)).has_value(), QByteArray::number(length).constData());
        for (qsizetype index = 0; index < encoded.size(); ++index)
            for (const char mask : {'\x01', '\x10', '\x80', '\xff'}) {
                QByteArray damaged = encoded;
                damaged[index] = static_cast<char>(damaged[index] ^ mask);
                PropertyList::parse(damaged); // any answer will do, an end of the process will not
            }
    }

    void leavesOutWhatTheFormatCannotHold()
    {
        const QVariantMap value{{u"text"_s, QString(u"a"_s + QChar(0) + QChar(1) + u'b')},
                                {u"nothing"_s, QVariant()},
                                {u"object"_s, QVariant::fromValue(static_cast<QObject *>(this))}};
        const auto back = PropertyList::parse(PropertyList::serialize(value));
        QVERIFY(back.has_value());
        QCOMPARE(back->toMap(), (QVariantMap{{u"text"_s, u"ab"_s}}));
        QVERIFY(PropertyList::serialize(QVariant()).isEmpty());
    }

    void readsOnlyRegularFiles()
    {
        QTemporaryDir folder;
        const QString pipe = folder.filePath(u"pipe"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path : {pipe, folder.path(), folder.filePath(u"none"_s), QString()})
            QVERIFY(!PropertyList::read(path).has_value());
        const QString list = folder.filePath(u"list"_s);
        QVERIFY(PropertyList::write(list, QVariantList{true}));
        QVERIFY(PropertyList::read(list).has_value());
        QVERIFY(!PropertyList::readDictionary(list).has_value());
    }

    void writesWithTheAskedAccess()
    {
        QTemporaryDir folder;
        const mode_t before = ::umask(022);
        for (const auto &[shared, mode] : {std::pair(false, 0600u), std::pair(true, 0644u)}) {
            const QString path = folder.filePath(QString::number(mode));
            QVERIFY(PropertyList::write(path, QVariantMap(), shared));
            QCOMPARE(testing::modeOf(path), mode);
        }
        ::umask(before);
    }
};

REGISTER_TEST(TestPropertyList)
#include "TestPropertyList.moc"
