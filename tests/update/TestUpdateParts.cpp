#include "platform/PropertyList.h"
#include "update/AppUpdateFlag.h"
#include "update/DownloadApp.h"

#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestUpdateParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsGroups_data();
    void findsGroups();
    void notesThatTheUserWasAsked_data();
    void notesThatTheUserWasAsked();
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

void TestUpdateParts::notesThatTheUserWasAsked_data()
{
    QTest::addColumn<QByteArray>("before"); // null: no file
    QTest::addColumn<QVariantMap>("after");
    const auto state = [](bool shown) { return QVariantMap{{u"ShownUpdateWindow"_s, shown}, {u"other"_s, u"kept"_s}}; };
    QTest::newRow("set") << platform::PropertyList::serialize(state(false)) << state(true);
    QTest::newRow("garbage") << QByteArray("garbage") << QVariantMap();
    QTest::newRow("missing") << QByteArray() << QVariantMap();
}

void TestUpdateParts::notesThatTheUserWasAsked()
{
    QFETCH(QByteArray, before);
    const QTemporaryDir folder;
    const QString resources = folder.filePath(u"Q.app/Contents/Resources"_s);
    QVERIFY(QDir().mkpath(resources));
    QFile file(resources + u"/AppUpdate.plist"_s);
    if (!before.isNull())
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(before) > 0);
    file.close();
    setShownUpdateWindow(platform::Bundle(folder.filePath(u"Q.app"_s)), true);
    QCOMPARE(file.exists(), !before.isNull());
    QTEST(platform::PropertyList::readDictionary(file.fileName()).value_or(QVariantMap()), "after");
    setShownUpdateWindow({}, true);
}

REGISTER_TEST(TestUpdateParts)
#include "TestUpdateParts.moc"
