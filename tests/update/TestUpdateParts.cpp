#include "update/DownloadApp.h"
#include "update/DownloadTarget.h"

#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestUpdateParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsGroups_data();
    void findsGroups();
};

void TestUpdateParts::findsGroups_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("in");
    QTest::addColumn<QStringList>("found");
    const QString volume = u"^*(/Volumes/Quillbox.*?)\\n"_s;
    QTest::newRow("volumes") << volume << u"disk2\t/Volumes/Quillbox 1\nx\ny /volumes/QUILLBOX\n"_s
                             << QStringList{u"/Volumes/Quillbox 1"_s, u"/volumes/QUILLBOX"_s};
    QTest::newRow("at the very start") << volume << u"/Volumes/Quillbox\n"_s << QStringList{u"/Volumes/Quillbox"_s};
    QTest::newRow("no line end") << volume << u"/Volumes/Quillbox"_s << QStringList();
    QTest::newRow("every group") << u"(a)(b)?"_s << u"abxA"_s << QStringList{u"a"_s, u"b"_s, u"A"_s, QString()};
    QTest::newRow("no group") << u"a"_s << u"aa"_s << QStringList();
    QTest::newRow("no pattern") << u"(a"_s << u"a"_s << QStringList();
}

void TestUpdateParts::findsGroups()
{
    QFETCH(QString, pattern);
    QFETCH(QString, in);
    QTEST(DownloadApp::catchStringWithRegex(pattern, in), "found");
}

REGISTER_TEST(TestUpdateParts)
#include "TestUpdateParts.moc"
