#include "channel/SocketMessage.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(QList<SocketMessage>)

namespace
{
const SocketMessage search = {SocketMessage::statusBarSearching(), u"quarter \"{}\" 报告 \\"_s};
const SocketMessage opened = {SocketMessage::appEvent(), u"quillbox://open\n"_s};
} // namespace

class TestSocketMessage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void form()
    {
        const QByteArray bytes = SocketMessage{SocketMessage::rightService(), u"a"_s}.bytes();
        QVERIFY2(bytes.contains('\n'), "pretty printed");
        QCOMPARE(bytes.simplified(), QByteArray("{ \"RightService\": \"a\" }"));
        QCOMPARE(search.key, u"StatusBarSearching"_s);
        QCOMPARE(opened.key, u"AppEvent"_s);
        QCOMPARE(SocketMessage::parse(search.bytes()), std::optional(search));
    }

    void splitting_data()
    {
        const testing::Rows<QByteArray, QList<SocketMessage>, int> row("stream", "messages", "skipped");
        const QByteArray one = search.bytes();
        const QByteArray two = opened.bytes();
        row("nothing", {}, QList<SocketMessage>(), 0);
        row("one", one, QList{search}, 0);
        row("joined", one + two + one, QList{search, opened, search}, 0);
        row("blanks between", "\n" + one + " \r\n\t" + two, QList{search, opened}, 0);
        row("compact", "{\"AppEvent\":\"quillbox://open\\n\"}", QList{opened}, 0);
        row("half", one.left(20), QList<SocketMessage>(), 0);
        row("garbage around", "\xFF\0junk]" + one + "}}]" + two + "x", QList{search, opened}, 3);
        row("half key, then one", "{\"AppEv" + QByteArray("\n") + one, QList{search}, 1);
        row("braces, then one", "{{{" + one, QList{search}, 3);
        row("number", QByteArray("{\"AppEvent\": 1}") + one, QList{search}, 1);
        row("two members", QByteArray("{\"a\": \"b\", \"c\": \"d\"}") + one, QList{search}, 1);
        row("no member", QByteArray("{}") + one, QList{search}, 1);
        row("no UTF-8", QByteArray("{\"AppEvent\": \"\xC3\x28\"}") + one, QList{search}, 1);
        row("broken escape", QByteArray("{\"AppEvent\": \"\\uQ\"}") + one, QList{search}, 1);
        row("many braces", QByteArray(200'000, '{') + one, QList{search}, 200'000);
    }
    void splitting()
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

    void oversizeIsBounded()
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
};

REGISTER_TEST(TestSocketMessage)
#include "TestSocketMessage.moc"
