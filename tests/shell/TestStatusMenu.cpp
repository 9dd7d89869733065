#include "platform/Localization.h"
#include "shell/MenuRecognition.h"
#include "shell/MenuRowView.h"
#include "shell/MenuWindow.h"
#include "shell/QBMenuItem.h"
#include "shell/StatusMenu.h"
#include "support/TestMain.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
QString bracketed(const QString &key)
{
    return u'<' + key + u'>';
}

QString allAlike(const QString &)
{
    return u"same"_s;
}

/// Not recognised: without pictures.
struct Recognition {
    QString title;
    QStringList pictures;
    QString display;
};
const QList<Recognition> Recognitions{
    {u"<JwH-8K-t3P.title>"_s, {u"Disk-Normal"_s, u"Disk-Enter"_s, u"Disk-Gray"_s}, u"Disk.title"_s},
    {u"<ghO-sy-2oG.title>"_s, {u"Safari-Normal"_s, u"Safari-Enter"_s, u"Safari-Gray"_s}, u"Safari.title"_s},
    {u"<Synchronization.title>"_s,
     {u"Synchronization_Normal"_s, u"Synchronization_Hover"_s, u"Synchronization_Gray"_s},
     u"Synchronization.title"_s},
    {u"文件直传"_s, {u"send_Normal"_s, u"send_Hover"_s, u"send_Gray"_s}, u"文件直传"_s},
    {u"<文件直传>"_s, {}, {}},
    {u"<Search.title>"_s, {u"LinkPointer-Enter"_s, u"LinkPointer-Hover"_s, u"LinkPointer-Gray"_s}, u"Search.title"_s},
    {u"搜索"_s, {u"Search-Normal"_s, u"Search-Enter"_s, u"Search-Gray"_s}, u"SearchMenu.titile"_s},
    {u"<搜索>"_s, {u"Search-Normal"_s, u"Search-Enter"_s, u"Search-Gray"_s}, u"SearchMenu.titile"_s},
    {u"<Exit.title>"_s, {u"Exit-Normal"_s, u"Exit-Enter"_s, u"Exit-Normal"_s}, u"Exit.title"_s},
    {u"Exit.title"_s, {}, {}},
    {u"Disk.title"_s, {}, {}},
    {{}, {}, {}}};

/// A menu of five entries named after their place, the fourth with a submenu, and a note of what was performed.
struct Scene {
    Scene()
    {
        for (int index = 0; index < 3; ++index)
            menu.addEntry(entry(QString::number(index), index));
        menu.addSubmenu({u"help"_s, u"Help"_s}, {entry(u"inner"_s, 0)});
        menu.addEntry(entry(u"4"_s, 4));
    }

    shell::MenuEntry entry(const QString &name, int tag)
    {
        return {name, name, tag, [this, name] { performed.append(name); }};
    }
    void popUp(QPoint place = {})
    {
        menu.menu()->popup(place);
        QVERIFY(QTest::qWaitForWindowExposed(menu.menu()));
    }
    QAction *action(int index) { return menu.menu()->actions().value(index); }
    MenuRow *item(int index) { return qobject_cast<MenuRow *>(action(index)); }
    MenuRowView *row(int index) { return menu.menu()->findChild<MenuRowView *>(action(index)->objectName()); }
    QStringList names()
    {
        QStringList found;
        for (const QAction *shown : menu.menu()->actions())
            found.append(shown->objectName());
        return found;
    }

    QStringList performed;
    int forbidden = -1; ///< the tag that validation refuses
    shell::StatusMenu menu{[this](int tag) { return tag != forbidden; }};
};

void moveTo(QWidget *row)
{
    QTest::mouseMove(row->window(), row->mapTo(row->window(), row->rect().center()));
}
} // namespace

/// The entries that draw themselves, in the menu and in the window that stands for it.
class TestStatusMenu : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void recognition();
    void looks_data();
    void looks();
    void hidingAndShowing();
    void pointer();
    void keyboard();
    void disabledEntriesDoNothing();
    void inAWindow();
};

void TestStatusMenu::initTestCase()
{
    QCOMPARE(platform::loadLocalization(QStringLiteral(MENU_PICTURES "/translations"), {u"en-US"_s}), u"en"_s);
}

void TestStatusMenu::recognition()
{
    for (const auto &[title, pictures, display] : Recognitions) {
        const shell::MenuLook *look = shell::recognizeMenuTitle(title, bracketed);
        const QStringList found = look ? QStringList{look->normal, look->pointer, look->disabled} : QStringList();
        QVERIFY2(found == pictures, qPrintable(title));
        QCOMPARE(look ? look->displayKey : QString(), display);
    }
    QCOMPARE(shell::recognizeMenuTitle(u"same"_s, allAlike)->displayKey, u"Disk.title"_s); // the first wins
}

void TestStatusMenu::looks_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("mainString");
    QTest::newRow("of the layout") << u"搜索"_s << QString();
    QTest::newRow("with a submenu") << u"Help"_s << QString();
    QTest::newRow("at run time") << u"Change Password"_s << u"ChangePassword"_s;
}

/// The three looks differ, picture and title for themselves, and the row is as wide as its title asks for.
void TestStatusMenu::looks()
{
    QFETCH(QString, title);
    QFETCH(QString, mainString);
    const QString pictures = QStringLiteral(MENU_PICTURES);
    QMenu submenu;
    QObject owner;
    QBMenuItem *item = mainString.isNull()
                           ? new QBMenuItem(title, nullptr, &owner, pictures)
                           : QBMenuItem::initWithTitle(title, nullptr, {}, mainString, &owner, pictures);
    if (mainString.isNull())
        item->setUpWithTitle(title);
    QVERIFY(item->text() != title || title == u"Help");
    if (title.startsWith(u"Help"))
        item->setMenu(&submenu);
    QWidget window;
    auto *view = qobject_cast<MenuRowView *>(item->requestWidget(&window));
    view->resize(view->sizeHint());
    QCOMPARE(view->height(), 23);
    QCOMPARE(view->width(), QFontMetrics(item->QBTitle().font).horizontalAdvance(item->text()) + 41 + 30);
    const auto paint = [&] { return view->grab().toImage(); };
    const QImage normal = paint();
    item->setQBHighlighted(true);
    const QImage highlighted = paint();
    QCOMPARE(highlighted.pixelColor(1, 1), view->palette().color(QPalette::Highlight));
    QCOMPARE(normal.pixelColor(1, 1), window.palette().color(QPalette::Window));
    item->setEnabled(false);
    const QImage gray = paint();
    const QRect picture(15, 3, 16, 16);
    const QRect arrow(view->width() - 24, 3, 16, 16);
    QList<QRect> parts{picture, QRect(41, 0, view->width() - 71, 23)};
    if (item->menu())
        parts.append(arrow);
    for (const QRect &part : parts) {
        QVERIFY(normal.copy(part) != highlighted.copy(part));
        QVERIFY(normal.copy(part) != gray.copy(part));
        QVERIFY(highlighted.copy(part) != gray.copy(part));
    }
    item->setQBHighlighted(false);
    QCOMPARE(paint(), gray);
    QCOMPARE(item->QBGrayTitle().text, item->text());
}

void TestStatusMenu::hidingAndShowing()
{
    for (const int otherRemoved : {0, 3}) {
        Scene scene;
        auto *item = qobject_cast<QBMenuItem *>(scene.action(2));
        item->removeSelfInMenu();
        QVERIFY(!scene.names().contains(u"2"_s));
        item->removeSelfInMenu(); // a second time changes nothing
        scene.menu.menu()->removeAction(scene.action(otherRemoved));
        item->showSelfInMenu();
        item->showSelfInMenu();
        QCOMPARE(scene.names().indexOf(u"2"_s), 2);
        QCOMPARE(scene.names().count(u"2"_s), 1);
    }
}

void TestStatusMenu::pointer()
{
    Scene scene;
    scene.popUp();
    moveTo(scene.row(1));
    QTRY_VERIFY(scene.item(1)->QBHighlighted());
    QCOMPARE(scene.menu.menu()->activeAction(), scene.action(1));
    moveTo(scene.row(2));
    QTRY_VERIFY(!scene.item(1)->QBHighlighted());
    QVERIFY(scene.item(2)->QBHighlighted());
    QTest::mouseClick(scene.row(2), Qt::LeftButton);
    QTRY_COMPARE(scene.performed, QStringList{u"2"_s});
    QVERIFY(!scene.menu.menu()->isVisible());
    QVERIFY(!scene.item(2)->QBHighlighted());
    QVERIFY(!scene.row(2)->accessibleName().isEmpty());
}

void TestStatusMenu::keyboard()
{
    Scene scene;
    scene.forbidden = 1;
    scene.popUp({300, 300}); // away from the pointer
    const auto highlighted = [&] {
        for (int index = 0; index < 5; ++index)
            if (scene.item(index)->QBHighlighted())
                return index;
        return -1;
    };
    const auto press = [](Qt::Key key) {
        QWidget *popup = QApplication::activePopupWidget();
        QTest::keyClick(popup->focusWidget() ? popup->focusWidget() : popup, key);
    };
    press(Qt::Key_Down);
    QCOMPARE(highlighted(), 0);
    press(Qt::Key_Down);
    if (highlighted() == 1) // the style may stop at disabled entries
        press(Qt::Key_Down);
    QCOMPARE(highlighted(), 2);
    press(Qt::Key_Down);
    const QMenu *submenu = scene.action(3)->menu();
    const auto *inner = qobject_cast<MenuRow *>(submenu->actions().first());
    for (int visit = 0; visit < 2; ++visit) {
        press(Qt::Key_Right);
        QTRY_VERIFY(submenu->isVisible());
        QVERIFY(inner->QBHighlighted());
        QCOMPARE(highlighted(), 3);
        press(Qt::Key_Left);
        QTRY_VERIFY(!submenu->isVisible());
        QCOMPARE(highlighted(), 3);
        QVERIFY(!inner->QBHighlighted());
    }
    press(Qt::Key_Down);
    QCOMPARE(highlighted(), 4);
    press(Qt::Key_Down);
    QCOMPARE(highlighted(), 0);
    press(Qt::Key_Return);
    QTRY_COMPARE(scene.performed, QStringList{u"0"_s});
    QTRY_VERIFY(!scene.menu.menu()->isVisible());
}

void TestStatusMenu::disabledEntriesDoNothing()
{
    Scene scene;
    scene.forbidden = 2;
    scene.popUp();
    QVERIFY(!scene.row(2)->isEnabled());
    moveTo(scene.row(2));
    QTest::mouseClick(scene.row(2), Qt::LeftButton);
    QTest::qWait(20);
    QVERIFY(scene.performed.isEmpty());
    QVERIFY(scene.menu.menu()->isVisible());
    QCOMPARE(scene.item(2)->look(), MenuRow::Look::Gray);
}

/// Without a tray the same rows stand in a window, where they take the keyboard themselves.
void TestStatusMenu::inAWindow()
{
    Scene scene;
    scene.forbidden = 1;
    shell::MenuWindow window(*scene.menu.menu());
    window.present();
    const auto row = [&](const QString &name) { return window.findChild<MenuRowView *>(name); };
    QVERIFY(row(u"0"_s)->isEnabled() && !row(u"1"_s)->isEnabled() && !row(u"inner"_s)->isVisible());
    row(u"help"_s)->click();
    QVERIFY(row(u"inner"_s)->isVisible());
    QTest::keyClick(row(u"inner"_s), Qt::Key_Return);
    QTRY_COMPARE(scene.performed, QStringList{u"inner"_s});
    QVERIFY(!window.isVisible());
}

REGISTER_TEST(TestStatusMenu)
#include "TestStatusMenu.moc"
