#include "panel/FileCopies.h"
#include "panel/SearchPanel.h"
#include "support/Cases.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
struct Search {
    const char *name;
    QString text;
    QStringList found;
};
const QList<Search> Searches{{"part, any case", u"PLAN"_s, {u"Plan B.txt"_s, u"plan"_s}},
                             {"a name with blanks around", u"  报告 "_s, {u"报告.pdf"_s}},
                             {"no pattern", u"*"_s, {}},
                             {"nothing", u"  "_s, {}}};

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
    void choosingOpensTheFolder();
    void finds_data() { addCases(Searches); }
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
    QVERIFY(PanelItems::write(path, {items}));
    QCOMPARE(PanelItems::read(path), std::optional(PanelList{items}));
    QCOMPARE(modeOf(path), 0600u);
    QVERIFY(PanelItems::write(path, {QList<PanelItem>(100'000, {QString(1000, u'n'), u"/v"_s, {}})}));
    QVERIFY(!PanelItems::read(path).value().isComplete);
    for (const QByteArray &damaged : {""_ba, R"([{"name":"a","fol)"_ba, "{}"_ba}) {
        QVERIFY(writeFile(path, damaged));
        QVERIFY(!PanelItems::read(path));
    }
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

void TestPanels::finds()
{
    const auto &[name, text, found] = currentCase(Searches);
    const QString place = folder.filePath(u"volume"_s);
    for (const QString &file : {u"plan/Plan B.txt"_s, u"plan/other"_s, u"报告.pdf"_s})
        QVERIFY(writeFile(place + u'/' + file, {}));
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
        QVERIFY(writeFile(place + u"/entry %1"_s.arg(index), {}));
    QVERIFY(writeFile(place + u"/wanted"_s, {}));
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
    QVERIFY(writeFile(target + u"/a.tar.gz"_s, "old"));
    QVERIFY(writeFile(folder.filePath(u"from/a.tar.gz"_s), "new"));
    FileCopies copies;
    copies.start({folder.filePath(u"from/a.tar.gz"_s), folder.filePath(u"from/missing"_s)}, target);
    QVERIFY(copies.isBusy());
    QTRY_VERIFY(!copies.isBusy());
    QCOMPARE(copies.items().at(0).state, FileCopies::done());
    QCOMPARE(copies.items().at(0).name, u"a.tar (2).gz"_s);
    QCOMPARE(copies.items().at(1).state, FileCopies::failed());
    QVERIFY(copies.hasFailures());
    QCOMPARE(contentOf(target + u"/a.tar.gz"_s), QByteArray("old"));
    QCOMPARE(contentOf(target + u"/a.tar (2).gz"_s), QByteArray("new"));
    QCOMPARE(FileCopies::freeName(target, u"a.tar (2).gz"_s), u"a.tar (2) (2).gz"_s);
    QCOMPARE(FileCopies::freeName(target, u".hidden"_s), u".hidden"_s);
}

REGISTER_TEST(TestPanels)
#include "TestPanels.moc"
