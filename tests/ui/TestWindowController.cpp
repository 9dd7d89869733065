#include "support/TestMain.h"
#include "ui/QBWindowController.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{
class Controller : public QBWindowController
{
public:
    int loads = 0;
    int didLoads = 0;
    int asked = 0;
    int escapes = 0;
    bool closes = true;
    std::function<void()> whenAsked = [] {};
    QLabel *extra = nullptr;

protected:
    QWidget *loadWindow() override
    {
        ++loads;
        auto *window = new QWidget;
        window->resize(320, 200);
        auto *layout = new QVBoxLayout(window);
        layout->addWidget(new QLabel(u"text"_s, window));
        extra = new QLabel(window);
        extra->setMinimumHeight(300);
        extra->hide();
        layout->addWidget(extra);
        return window;
    }
    void windowDidLoad() override { ++didLoads; }
    bool windowShouldClose() override
    {
        ++asked;
        const bool answer = closes;
        whenAsked();
        return answer;
    }
    bool escapePressed() override
    {
        ++escapes;
        whenAsked();
        return true;
    }
};
} // namespace

class TestWindowController : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void loadsOnFirstUse()
    {
        Controller controller;
        controller.close();
        QVERIFY(!controller.isWindowLoaded() && !controller.isVisible());
        controller.showWindow();
        QVERIFY(controller.isVisible());
        QWidget *window = controller.window();
        controller.close();
        QVERIFY(!controller.isVisible());
        controller.showWindow();
        QVERIFY(controller.isVisible());
        QCOMPARE(controller.window(), window);
        QCOMPARE(controller.loads, 1);
        QCOMPARE(controller.didLoads, 1);
    }

    void closingAsks()
    {
        Controller controller;
        controller.showWindow();
        controller.closes = false;
        QVERIFY(!controller.window()->close());
        QVERIFY(controller.isVisible());
        QCOMPARE(controller.asked, 1);
        controller.closes = true;
        QVERIFY(controller.window()->close());
        QVERIFY(!controller.isVisible());
        QCOMPARE(controller.asked, 2);
        controller.showWindow();
        QVERIFY(controller.isVisible());
        controller.close();
        QCOMPARE(controller.asked, 2);
    }

    void escapeIsForWhoWantsItFirst()
    {
        Controller controller;
        controller.showWindow();
        QTest::keyClick(controller.extra, Qt::Key_Escape);
        QTest::keyClick(controller.window(), Qt::Key_A);
        QCOMPARE(controller.escapes, 1);
        QPushButton other;
        QTest::keyClick(&other, Qt::Key_Escape);
        QCOMPARE(controller.escapes, 1);
    }

    /// At its end in an event of its own window, or in none.
    void mayEndAtAnyTime_data()
    {
        QTest::addColumn<QString>("moment");
        for (const char *moment : {"shown", "close", "Escape", "button"})
            QTest::newRow(moment) << QString::fromLatin1(moment);
    }
    void mayEndAtAnyTime()
    {
        QFETCH(QString, moment);
        auto controller = std::make_unique<Controller>();
        controller->whenAsked = [&controller] { controller.reset(); };
        auto *button = new QPushButton(controller->window());
        connect(button, &QPushButton::clicked, this, [&controller] { controller.reset(); });
        controller->showWindow();
        const QPointer<QWidget> window(controller->window());
        if (moment == u"shown"_s)
            controller.reset();
        else if (moment == u"close"_s)
            window->close();
        else if (moment == u"Escape"_s)
            QTest::keyClick(window.data(), Qt::Key_Escape);
        else
            QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!controller);
        QVERIFY(!window || !window->isVisible());
        QTRY_VERIFY(!window);
    }

    void dressesTheWindow()
    {
        Controller controller;
        const QWidget *window = controller.window();
        QCOMPARE(window->palette().color(QPalette::Window), QColor(Qt::white));
        QVERIFY(window->windowFlags() & Qt::WindowCloseButtonHint);
        QVERIFY(!(window->windowFlags() & Qt::WindowMinMaxButtonsHint));
        QVERIFY(!window->windowTitle().isEmpty());
    }

    void keepsItsSizeAndGrowsForContent()
    {
        Controller controller;
        controller.showWindow();
        QWidget *window = controller.window();
        QTRY_COMPARE(window->size(), QSize(320, 200));
        window->resize(900, 900);
        QCOMPARE(window->size(), QSize(320, 200));
        controller.extra->show();
        QTRY_VERIFY(window->height() > 300);
        QCOMPARE(window->width(), 320);
        controller.extra->hide();
        QTRY_COMPARE(window->size(), QSize(320, 200));
    }
};

REGISTER_TEST(TestWindowController)
#include "TestWindowController.moc"
