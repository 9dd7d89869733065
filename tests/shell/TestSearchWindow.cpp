#include "DelegateFixture.h"

#include "support/TestMain.h"

#include <QLineEdit>
#include <QTest>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
QWidget *searchWindow()
{
    return DelegateFixture::visibleWindow(u"SearchWindowsController"_s);
}

QLineEdit *field()
{
    return searchWindow() ? searchWindow()->findChild<QLineEdit *>(u"txtSearchInputField"_s) : nullptr;
}
} // namespace

/// The window as the user meets it, with a companion on the real socket.
class TestSearchWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sendsWhatIsTyped();
};

void TestSearchWindow::sendsWhatIsTyped()
{
    DelegateFixture fixture;
    const CompanionEnd companion(fixture.host.folders.temporary());
    AppDelegate &delegate = fixture.delegate();
    delegate.showSearchWindow();
    QVERIFY(field());
    QTRY_COMPARE(companion.connections(), 1);
    QList<SocketMessage> expected;
    for (const QString &text : {u" https://cloud.example/link?docid=a \"b\""_s, u"报告"_s, u""_s}) {
        field()->setText(text);
        QTest::keyClick(field(), Qt::Key_Return);
        QCOMPARE(field()->text(), text);
        expected.append({u"StatusBarSearching"_s, text});
        QTRY_COMPARE(companion.received(), expected);
    }
    // Closed and opened again it is the same window, emptied; after signing out another one.
    field()->setText(u"left over"_s);
    searchWindow()->close();
    delegate.showSearchWindow();
    QCOMPARE(field()->text(), u""_s);
    QCOMPARE(companion.connections(), 1);
    delegate.logoutOnManager();
    QVERIFY(!searchWindow());
    delegate.showSearchWindow();
    QTRY_COMPARE(companion.connections(), 2);
    QTest::keyClick(field(), Qt::Key_Escape);
    QVERIFY(!searchWindow());
}

REGISTER_TEST(TestSearchWindow)
#include "TestSearchWindow.moc"
