#include "DelegateFixture.h"

#include "channel/GDUnixSocketServer.h"
#include "channel/SocketMessage.h"
#include "support/TestMain.h"

#include <QLineEdit>
#include <QTest>

#include <mutex>

using namespace Qt::StringLiterals;
using testing::DelegateFixture;

namespace
{

/// What a companion at the socket would see.
class Companion : public GDUnixSocketServerDelegate
{
public:
    void didReceiveData(GDUnixSocketServer &, const QByteArray &data, const QString &) override
    {
        const std::lock_guard lock(mutex);
        received += data;
    }
    void didAcceptClientWithID(GDUnixSocketServer &, const QString &) override
    {
        const std::lock_guard lock(mutex);
        ++clients;
    }
    QByteArray bytes() const
    {
        const std::lock_guard lock(mutex);
        return received;
    }
    int connections() const
    {
        const std::lock_guard lock(mutex);
        return clients;
    }

private:
    mutable std::mutex mutex;
    QByteArray received;
    int clients = 0;
};

QLineEdit *fieldOf(QWidget *window)
{
    return window ? window->findChild<QLineEdit *>(u"txtSearchInputField"_s) : nullptr;
}

QWidget *searchWindow()
{
    return DelegateFixture::visibleWindow(u"SearchWindowsController"_s);
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
    const auto companion = std::make_shared<Companion>();
    const auto server = GDUnixSocketServer::initWithSocketPath(fixture.host.folders.temporary() + u"/search_socket"_s);
    server->setDelegate(companion);
    QVERIFY(server->listenWithError());
    AppDelegate &delegate = fixture.delegate();
    delegate.showSearchWindow();
    QLineEdit *field = fieldOf(searchWindow());
    QVERIFY(field);
    QTRY_COMPARE(companion->connections(), 1);
    QByteArray expected;
    for (const QString &text : {u" https://cloud.example/link?docid=a \"b\""_s, u"报告"_s, u""_s}) {
        field->setText(text);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(field->text(), text);
        expected += SocketMessage{u"StatusBarSearching"_s, text}.bytes();
        QTRY_COMPARE(companion->bytes(), expected);
    }
    field->setText(u"left over"_s);
    searchWindow()->close();
    delegate.showSearchWindow();
    QCOMPARE(fieldOf(searchWindow()), field);
    QCOMPARE(field->text(), u""_s);
    QVERIFY(!field->placeholderText().isEmpty() && !searchWindow()->windowTitle().isEmpty());
    QCOMPARE(companion->connections(), 1);

    delegate.logoutOnManager();
    QVERIFY(!searchWindow());
    delegate.showSearchWindow();
    QTRY_COMPARE(companion->connections(), 2);
    QTest::keyClick(fieldOf(searchWindow()), Qt::Key_Escape);
    QVERIFY(!searchWindow());
    server->close();
}

REGISTER_TEST(TestSearchWindow)
#include "TestSearchWindow.moc"
