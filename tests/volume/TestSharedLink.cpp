#include "support/TestMain.h"
#include "volume/SharedLink.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace volume;

class TestSharedLink : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsLinks_data();
    void readsLinks();
    void findsPlaces_data();
    void findsPlaces();
};

void TestSharedLink::readsLinks_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("id");
    const QString id = u"qb://k1/20"_s;
    const QString encoded = u"qb%3A%2F%2Fk1%2F20"_s;
    const auto row = [](const char *name, const QString &link, const QString &expected) {
        QTest::newRow(name) << link << expected;
    };
    row("bare id", id, id);
    row("blanks around", u"  \n"_s + id + u"\t"_s, id);
    row("query", u"https://cloud.example:8443/link?a=b&docid="_s + encoded + u"&x=y"_s, id);
    row("query, not encoded", u"http://cloud.example/link?docid="_s + id, id);
    row("fragment's query", u"https://cloud.example/#/share?docid="_s + encoded, id);
    row("path", u"https://cloud.example/link/"_s + encoded, id);
    row("fragment's path", u"https://cloud.example/#/link/"_s + encoded, id);
    row("own scheme", u"quillbox://open?docid="_s + id, id);
    row("prefix", u"AS://Inner/"_s + encoded, id);
    row("prefix, not encoded", u"as://inner/"_s + id, id);
    const QString none;
    row("empty", u""_s, none);
    row("scheme alone", u"qb://"_s, none);
    row("prefix alone", u"as://inner/"_s, none);
    row("other scheme", u"file:///etc/passwd?docid="_s + encoded, none);
    row("no id", u"https://cloud.example/link?docid=7"_s, none);
    row("no address", u"quarterly report"_s, none);
    row("control character", u"https://cloud.example/?docid=qb%3A%2F%2Fk%0A1"_s, none);
    row("blank in the id", u"qb://k 1"_s, none);
    row("long id", u"qb://"_s + QString(1020, u'k'), none);
    row("long text", u"https://cloud.example/?docid="_s + encoded + u"&x="_s + QString(9000, u'x'), none);
}

void TestSharedLink::readsLinks()
{
    QFETCH(const QString, link);
    QFETCH(const QString, id);
    QCOMPARE(SharedLink::documentId(link, u"as://inner/"_s), id);
}

void TestSharedLink::findsPlaces_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("places");
    QTest::newRow("entry") << u"Ann"_s << QStringList{u"MyDocuments.localized/Ann"_s};
    QTest::newRow("document") << u"/Ann/报告/a b.txt"_s << QStringList{u"MyDocuments.localized/Ann/报告/a b.txt"_s};
    QTest::newRow("slash in the entry's name") << u"R/D/x"_s << QStringList{u"GroupDocuments.localized/R_D/x"_s};
    QTest::newRow("two of a name") << u"Plans/x"_s
                                   << QStringList{u"Libraries.localized/Plans/x"_s,
                                                  u"Libraries.localized/Plans (2)/x"_s};
    QTest::newRow("upwards") << u"Ann/../../x"_s << QStringList();
    QTest::newRow("only a beginning") << u"Anna/x"_s << QStringList();
    QTest::newRow("empty") << u""_s << QStringList();
}

void TestSharedLink::findsPlaces()
{
    QFETCH(const QString, path);
    QFETCH(const QStringList, places);
    const auto entry = [](const QString &id, const QString &name, int category) {
        Document made;
        made.kind = Document::Kind::Entry;
        made.id = id;
        made.name = name;
        made.category = category;
        return made;
    };
    QCOMPARE(SharedLink::places(path, {entry(u"qb://1"_s, u"Ann"_s, 1), entry(u"qb://2"_s, u"R/D"_s, 2),
                                       entry(u"qb://3"_s, u"Plans"_s, 3), entry(u"qb://4"_s, u"Plans"_s, 3)}),
             places);
}

REGISTER_TEST(TestSharedLink)
#include "TestSharedLink.moc"
