#include "platform/PropertyList.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace platform;

namespace
{

QByteArray xml(const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + content + "</plist>";
}

QByteArray nested(int levels)
{
    return xml(QByteArray("<array>").repeated(levels) + QByteArray("</array>").repeated(levels));
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
    void roundTrip_data();
    void roundTrip();
    void reads_data();
    void reads();
    void refuses_data();
    void refuses();
    void survivesEveryCut();
    void survivesEveryFlippedByte();
    void leavesOutWhatTheFormatCannotHold();
    void readsOnlyRegularFiles();
    void writesWithTheAskedAccess();
};

void TestPropertyList::roundTrip_data()
{
    QTest::addColumn<QVariant>("value");
    const QDateTime date(QDate(2026, 11, 22), QTime(10, 20, 30), Qt::UTC);
    QTest::newRow("text") << QVariant(QStringLiteral("a <b> & \"c\" 中文 \U0001F600"));
    QTest::newRow("empty text") << QVariant(QStringLiteral(""));
    QTest::newRow("blank text") << QVariant(QStringLiteral("  \n "));
    QTest::newRow("true") << QVariant(true);
    QTest::newRow("false") << QVariant(false);
    QTest::newRow("zero") << QVariant(qint64(0));
    QTest::newRow("negative") << QVariant(qint64(-5));
    QTest::newRow("smallest") << QVariant(std::numeric_limits<qint64>::min());
    QTest::newRow("largest") << QVariant(std::numeric_limits<qint64>::max());
    QTest::newRow("real") << QVariant(0.1);
    QTest::newRow("date") << QVariant(date);
    QTest::newRow("data") << QVariant(QByteArray("\0\1\xff", 3));
    QTest::newRow("empty data") << QVariant(QByteArray(""));
    QTest::newRow("empty list") << QVariant(QVariantList());
    QTest::newRow("empty dictionary") << QVariant(QVariantMap());
    QTest::newRow("nested") << QVariant(
        QVariantMap{{QStringLiteral("server"), QVariantMap{{QStringLiteral("authPort"), QStringLiteral("443")}}},
                    {QStringLiteral("list"), QVariantList{qint64(1), QStringLiteral("2"), QVariantMap()}}});
}

void TestPropertyList::roundTrip()
{
    QFETCH(QVariant, value);
    const auto back = PropertyList::parse(PropertyList::serialize(value));
    QVERIFY(back.has_value());
    QCOMPARE(back->typeId(), value.typeId());
    QCOMPARE(*back, value);
}

void TestPropertyList::reads_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QVariant>("value");
    const QByteArray doctype(
        "<!DOCTYPE plist PUBLIC \"-//x//y\" \"http://127.0.0.1/x.dtd\"><plist><string>a</string></plist>");
    QTest::newRow("document type") << doctype << QVariant(QStringLiteral("a"));
    QTest::newRow("comments") << xml("<!-- </plist> --><array><!-- x --><true/></array>")
                              << QVariant(QVariantList{true});
    QTest::newRow("padded integer") << xml("<integer> -7\n</integer>") << QVariant(qint64(-7));
    QTest::newRow("wrapped data") << xml("<data>\n\tAQ\n\tID\n</data>") << QVariant(QByteArray("\1\2\3"));
    QTest::newRow("character data") << xml("<string><![CDATA[<array>]]></string>")
                                    << QVariant(QStringLiteral("<array>"));
    QTest::newRow("deepest") << nested(64) << [] {
        QVariant value = QVariantList();
        for (int level = 1; level < 64; ++level)
            value = QVariantList{value};
        return value;
    }();
    QTest::newRow("binary") << QByteArray::fromHex(
                                   "62706c6973743030d20102030451615162223fc00000137ffffffffffffffb"
                                   "080d0f1116000000000000010100000000000000050000000000000000000000000000001f")
                            << QVariant(QVariantMap{{QStringLiteral("a"), 1.5},
                                                    {QStringLiteral("b"), qint64(0x7ffffffffffffffb)}});
    QTest::newRow("binary, shared children") << binary(2, 2)
                                             << QVariant(QVariantList{QVariantList{QVariantList(), QVariantList()},
                                                                      QVariantList{QVariantList(), QVariantList()}});
}

void TestPropertyList::reads()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QVariant, value);
    const auto read = PropertyList::parse(bytes);
    QVERIFY(read.has_value());
    QCOMPARE(*read, value);
}

void TestPropertyList::refuses_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("garbage") << QByteArray("garbage");
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("another document") << QByteArray("<html><string>a</string></html>");
    QTest::newRow("no value") << xml("");
    QTest::newRow("two values") << xml("<true/><true/>");
    QTest::newRow("unknown element") << xml("<number>1</number>");
    QTest::newRow("words as integer") << xml("<integer>abc</integer>");
    QTest::newRow("integer with a tail") << xml("<integer>12x</integer>");
    QTest::newRow("empty integer") << xml("<integer></integer>");
    QTest::newRow("integer too large") << xml("<integer>9223372036854775808</integer>");
    QTest::newRow("words as real") << xml("<real>abc</real>");
    QTest::newRow("words as date") << xml("<date>yesterday</date>");
    QTest::newRow("words as data") << xml("<data>*!*</data>");
    QTest::newRow("filled boolean") << xml("<true>x</true>");
    QTest::newRow("element in text") << xml("<string>a<true/></string>");
    QTest::newRow("key without value") << xml("<dict><key>a</key></dict>");
    QTest::newRow("value without key") << xml("<dict><true/></dict>");
    QTest::newRow("bad UTF-8") << xml("<string>\xff\xfe</string>");
    QTest::newRow("entities") << QByteArray("<!DOCTYPE plist [<!ENTITY a \"x\">]><plist><string>&a;</string></plist>");
    QTest::newRow("one level too deep") << nested(65);
    QTest::newRow("200,000 levels") << nested(200'000);
    QTest::newRow("too large") << xml("<string>" + QByteArray(16 * 1024 * 1024, 'a') + "</string>");
    QTest::newRow("binary header alone") << QByteArray("bplist00");
    QTest::newRow("binary zeros") << "bplist00" + QByteArray(64, '\0');
    QTest::newRow("binary ones") << "bplist00" + QByteArray(64, '\xff');
    QTest::newRow("binary, one level too deep") << binary(64, 1);
    QTest::newRow("binary, too deep") << binary(3000, 1);
    QTest::newRow("binary, unfolds without end") << binary(40, 2);
    QByteArray loop = binary(1, 1);
    loop[9] = 0;
    loop[10] = 0;
    QTest::newRow("binary, holds itself") << loop;
}

void TestPropertyList::refuses()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!PropertyList::parse(bytes).has_value());
}

void TestPropertyList::survivesEveryCut()
{
    const QByteArray text = PropertyList::serialize(QVariantMap{{QStringLiteral("a"), QVariantList{qint64(1), true}}});
    QVERIFY(PropertyList::parse(text).has_value());
    const auto end = text.indexOf("</plist>") + 7;
    for (qsizetype length = 0; length < end; ++length)
        QVERIFY2(!PropertyList::parse(text.left(length)).has_value(), QByteArray::number(length).constData());
    const QByteArray encoded = binary(3, 2);
    for (qsizetype length = 0; length < encoded.size(); ++length)
        QVERIFY2(!PropertyList::parse(encoded.left(length)).has_value(), QByteArray::number(length).constData());
}

void TestPropertyList::survivesEveryFlippedByte()
{
    const QByteArray encoded = binary(3, 2);
    for (qsizetype index = 0; index < encoded.size(); ++index) {
        for (const char mask : {'\x01', '\x10', '\x80', '\xff'}) {
            QByteArray damaged = encoded;
            damaged[index] = static_cast<char>(damaged[index] ^ mask);
            PropertyList::parse(damaged); // any answer will do, an end of the process will not
        }
    }
}

void TestPropertyList::leavesOutWhatTheFormatCannotHold()
{
    const QVariantMap value{{QStringLiteral("text"), QString(QStringLiteral("a") + QChar(0) + QChar(1) + u'b')},
                            {QStringLiteral("nothing"), QVariant()},
                            {QStringLiteral("object"), QVariant::fromValue(static_cast<QObject *>(this))}};
    const auto back = PropertyList::parse(PropertyList::serialize(value));
    QVERIFY(back.has_value());
    QCOMPARE(back->toMap(), (QVariantMap{{QStringLiteral("text"), QStringLiteral("ab")}}));
    QVERIFY(PropertyList::serialize(QVariant()).isEmpty());
}

void TestPropertyList::readsOnlyRegularFiles()
{
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString &path : {pipe, folder.path(), folder.filePath(QStringLiteral("none")), QString()})
        QVERIFY(!PropertyList::read(path).has_value());
    const QString list = folder.filePath(QStringLiteral("list"));
    QVERIFY(PropertyList::write(list, QVariantList{true}));
    QVERIFY(PropertyList::read(list).has_value());
    QVERIFY(!PropertyList::readDictionary(list).has_value());
}

void TestPropertyList::writesWithTheAskedAccess()
{
    QTemporaryDir folder;
    const mode_t before = ::umask(022);
    for (const auto &[shared, mode] : {std::pair(false, 0600u), std::pair(true, 0644u)}) {
        const QString path = folder.filePath(QString::number(mode));
        QVERIFY(PropertyList::write(path, QVariantMap(), shared));
        struct stat information = {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &information), 0);
        QCOMPARE(information.st_mode & 0777u, mode);
    }
    ::umask(before);
}

REGISTER_TEST(TestPropertyList)
#include "TestPropertyList.moc"
