#include "MemoryDocuments.h"

#include "support/Rows.h"
#include "support/TestMain.h"
#include "volume/SharedLink.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace volume;

class TestSharedLink : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsLinks_data()
    {
        const testing::Rows<QString, QString> row("link", "id");
        const QString id = u"qb://k1/20"_s;
        const QString encoded = u"qb%3A%2F%2Fk1%2F20"_s;
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
    void readsLinks()
    {
        QFETCH(const QString, link);
        QFETCH(const QString, id);
        QCOMPARE(SharedLink::documentId(link, u"as://inner/"_s), id);
    }

    void findsPlaces_data()
    {
        const testing::Rows<QString, QStringList> row("path", "places");
        row("entry", "Ann", QStringList{u"MyDocuments.localized/Ann"_s});
        row("document", "/Ann/报告/a b.txt", QStringList{u"MyDocuments.localized/Ann/报告/a b.txt"_s});
        row("slash in the entry's name", "R/D/x", QStringList{u"GroupDocuments.localized/R_D/x"_s});
        row("two of a name", "Plans/x",
            QStringList{u"Libraries.localized/Plans/x"_s, u"Libraries.localized/Plans (2)/x"_s});
        row("upwards", "Ann/../../x", {});
        row("only a beginning", "Anna/x", {});
        row("empty", "", {});
    }
    void findsPlaces()
    {
        QFETCH(const QString, path);
        QFETCH(const QStringList, places);
        QCOMPARE(SharedLink::places(path, {testing::entry(u"Ann"_s, 1), testing::entry(u"R/D"_s, 2),
                                           testing::entry(u"Plans"_s, 3), testing::entry(u"Plans"_s, 3, u"qb://4"_s)}),
                 places);
    }
};

REGISTER_TEST(TestSharedLink)
#include "TestSharedLink.moc"
