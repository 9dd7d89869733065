#include "panel/FileCopies.h"
#include "panel/SearchPanel.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace
{
void makeFile(const QString &path, const QByteArray &content = "x")
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QStringList names(const QWidget &panel)
{
    QStringList found;
    const auto *list = panel.findChild<QTreeWidget *>();
    for (int index = 0; index < list->topLevelItemCount(); ++index)
        found.append(list->topLevelItem(index)->text(0));
    found.sort();
    return found;
}
} // namespace

/// The companion's windows over ordinary folders.
class TestPanels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void itemsSurviveTheFile();
    void damagedItems_data();
    void damagedItems();
    void choosingOpensTheFolder();
    void finds_data();
    void finds();
    void laterSearchWins();
    void copies();

private:
    QTemporaryDir folder;
};

void TestPanels::itemsSurviveTheFile()
{
    const QString path = folder.filePath(u"items"_s);
    QVERIFY(!PanelItems::read(path));
    const QList<PanelItem> items{{u"a\"\n报告"_s, u"/v/Folder"_s, PanelItems::waiting()}, {u"b"_s, u"/v"_s, {}}};
    QVERIFY(PanelItems::write(path, items));
    QCOMPARE(PanelItems::read(path), std::optional(items));
    QCOMPARE(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    QVERIFY(PanelItems::write(path, QList<PanelItem>(100'000, {QString(1000, u'n'), u"/v"_s, {}})));
    QVERIFY(PanelItems::read(path));
}

void TestPanels::damagedItems_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut") << QByteArray(R"([{"name":"a","fol)");
    QTest::newRow("an object") << QByteArray("{}");
}

void TestPanels::damagedItems()
{
    QFETCH(QByteArray, content);
    const QString path = folder.filePath(u"damaged"_s);
    makeFile(path, content);
    QVERIFY(!PanelItems::read(path));
}

void TestPanels::choosingOpensTheFolder()
{
    QString opened;
    ListPanel panel(u"List"_s, [&](const QString &path) { opened = path; });
    panel.setRoot(u"/v"_s);
    panel.setItems({{u"a"_s, u"/v/One"_s, {}}, {u"<b>"_s, u"/elsewhere"_s, FileCopies::done()}});
    auto *list = panel.findChild<QTreeWidget *>();
    QCOMPARE(list->topLevelItem(0)->text(1), u"One"_s);
    QCOMPARE(list->topLevelItem(1)->text(1), u"/elsewhere"_s);
    list->setCurrentItem(list->topLevelItem(1));
    panel.setItems({{u"c"_s, u"/v"_s, {}}, {u"<b>"_s, u"/elsewhere"_s, {}}});
    panel.show();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(opened, u"/elsewhere"_s);
    QTest::keyClick(&panel, Qt::Key_Escape);
    QVERIFY(!panel.isVisible());
}

void TestPanels::finds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("part, any case") << u"PLAN"_s << QStringList{u"Plan B.txt"_s, u"plan"_s};
    QTest::newRow("a name with blanks around") << u"  报告 "_s << QStringList{u"报告.pdf"_s};
    QTest::newRow("no pattern") << u"*"_s << QStringList();
    QTest::newRow("nothing") << u"  "_s << QStringList();
}

void TestPanels::finds()
{
    QFETCH(QString, text);
    QFETCH(QStringList, found);
    const QString place = folder.filePath(u"volume"_s);
    for (const QString &name : {u"plan/Plan B.txt"_s, u"plan/other"_s, u"报告.pdf"_s})
        makeFile(place + u'/' + name);
    SearchPanel panel(place, u"Search"_s, [](const QString &) {});
    auto *status = panel.findChild<QLabel *>(u"status"_s);
    panel.search(text);
    QTRY_VERIFY(status->text() != u"正在搜索…");
    QTRY_COMPARE(names(panel), found);
    QCOMPARE(status->text() == u"未找到文档", found.isEmpty() && !text.trimmed().isEmpty());
}

void TestPanels::laterSearchWins()
{
    const QString place = folder.filePath(u"many"_s);
    for (int index = 0; index < SearchPanel::MaximumHits + 20; ++index)
        makeFile(place + u"/entry %1"_s.arg(index));
    makeFile(place + u"/wanted"_s);
    SearchPanel panel(place, u"Search"_s, [](const QString &) {});
    panel.search(u"entry"_s);
    panel.search(u"wanted"_s);
    QTRY_COMPARE(names(panel), QStringList{u"wanted"_s});
    QTest::qWait(50);
    QCOMPARE(names(panel), QStringList{u"wanted"_s});
    panel.search(u"entry"_s);
    QTRY_COMPARE(names(panel).size(), qsizetype(SearchPanel::MaximumHits));
}

void TestPanels::copies()
{
    const QString target = folder.filePath(u"target"_s);
    makeFile(target + u"/a.tar.gz"_s, "old");
    makeFile(folder.filePath(u"from/a.tar.gz"_s), "new");
    FileCopies copies;
    copies.start({folder.filePath(u"from/a.tar.gz"_s), folder.filePath(u"from/missing"_s)}, target);
    QVERIFY(copies.isBusy());
    QTRY_VERIFY(!copies.isBusy());
    QCOMPARE(copies.items().at(0).state, FileCopies::done());
    QCOMPARE(copies.items().at(0).name, u"a.tar (2).gz"_s);
    QCOMPARE(copies.items().at(1).state, FileCopies::failed());
    QVERIFY(copies.hasFailures());
    QFile kept(target + u"/a.tar.gz"_s);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("old"));
    QCOMPARE(FileCopies::freeName(target, u"a.tar (2).gz"_s), u"a.tar (2) (2).gz"_s);
    QCOMPARE(FileCopies::freeName(target, u".hidden"_s), u".hidden"_s);
}

REGISTER_TEST(TestPanels)
#include "TestPanels.moc"
