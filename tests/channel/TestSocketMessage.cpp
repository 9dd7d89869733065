#include "channel/SocketMessage.h"
#include "support/TestMain.h"

#include <QTest>

Q_DECLARE_METATYPE(QList<SocketMessage>)

namespace
{
const SocketMessage search = {SocketMessage::statusBarSearching(), QStringLiteral("quarter \"{}\" 报告 \\")};
const SocketMessage opened = {SocketMessage::appEvent(), QStringLiteral("quillbox://open\n")};
} // namespace

class TestSocketMessage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void form();
    void splitting_data();
    void splitting();
    void oversizeIsBounded();
};

void TestSocketMessage::form()
{
    const QByteArray bytes = SocketMessage{SocketMessage::rightService(), QStringLiteral("a")}.bytes();
    QVERIFY2(bytes.contains('\n'), "pretty printed");
    QCOMPARE(bytes.simplified(), QByteArray("{ \"RightService\": \"a\" }"));
    QCOMPARE(search.key, QStringLiteral("StatusBarSearching"));
    QCOMPARE(opened.key, QStringLiteral("AppEvent"));
    QCOMPARE(SocketMessage::parse(search.bytes()), std::optional(search));
}

void TestSocketMessage::splitting_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QList<SocketMessage>>("messages");
    QTest::addColumn<int>("skipped");
    const QByteArray one = search.bytes();
    const QByteArray two = opened.bytes();
    QTest::newRow("nothing") << QByteArray() << QList<SocketMessage>() << 0;
    QTest::newRow("one") << one << QList{search} << 0;
    QTest::newRow("joined") << one + two + one << QList{search, opened, search} << 0;
    QTest::newRow("blanks between") << "\n" + one + " \r\n\t" + two << QList{search, opened} << 0;
    QTest::newRow("compact") << QByteArray("{\"AppEvent\":\"quillbox://open\\n\"}") << QList{opened} << 0;
    QTest::newRow("half") << one.left(20) << QList<SocketMessage>() << 0;
    QTest::newRow("garbage around") << "\xFF\0junk]" + one + "}}]" + two + "x" << QList{search, opened} << 3;
    QTest::newRow("half key, then one") << "{\"AppEv" + QByteArray("\n") + one << QList{search} << 1;
    QTest::newRow("braces, then one") << "{{{" + one << QList{search} << 3;
    QTest::newRow("number") << QByteArray("{\"AppEvent\": 1}") + one << QList{search} << 1;
    QTest::newRow("two members") << QByteArray("{\"a\": \"b\", \"c\": \"d\"}") + one << QList{search} << 1;
    QTest::newRow("no member") << QByteArray("{}") + one << QList{search} << 1;
    QTest::newRow("no UTF-8") << QByteArray("{\"AppEvent\": \"\xC3\x28\"}") + one << QList{search} << 1;
    QTest::newRow("broken escape") << QByteArray("{\"AppEvent\": \"\\uQ\"}") + one << QList{search} << 1;
    QTest::newRow("many braces") << QByteArray(200'000, '{') + one << QList{search} << 200'000;
}

void TestSocketMessage::splitting()
{
    QFETCH(const QByteArray, stream);
    for (const qsizetype piece : {qsizetype(1), qsizetype(7), qsizetype(256), stream.size() + 1}) {
        SocketMessageSplitter splitter;
        QList<SocketMessage> found;
        for (qsizetype start = 0; start < stream.size(); start += piece)
            found += splitter.feed(stream.mid(start, piece));
        QTEST(found, "messages");
        QTEST(static_cast<int>(splitter.skipped()), "skipped");
    }
}

void TestSocketMessage::oversizeIsBounded()
{
    const SocketMessage largest = {SocketMessage::appEvent(),
                                   QString(SocketMessageSplitter::maximumBytes - 30, QChar(u'a'))};
    SocketMessageSplitter splitter;
    QCOMPARE(splitter.feed(largest.bytes()), QList{largest});
    const SocketMessage tooLarge = {SocketMessage::appEvent(),
                                    QString(SocketMessageSplitter::maximumBytes, QChar(u'a'))};
    QCOMPARE(splitter.feed(tooLarge.bytes() + search.bytes()), QList{search});
    QCOMPARE(splitter.skipped(), 1);
    QVERIFY(!splitter.hasPartialMessage());
    QVERIFY(splitter.feed("{\"a").isEmpty());
    QVERIFY(splitter.hasPartialMessage());
}

REGISTER_TEST(TestSocketMessage)
#include "TestSocketMessage.moc"
