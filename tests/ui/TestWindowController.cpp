#include "support/TestMain.h"
#include "ui/Application.h"
#include "ui/QBWindowController.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

namespace
{
class Controller : public QBWindowController
{
public:
    int loads = 0;
    int didLoads = 0;
    bool closes = true;
    std::function<void()> onClose;
    QLabel *extra = nullptr;

protected:
    QWidget *loadWindow() override
    {
        ++loads;
        auto *window = new QWidget;
        window->resize(320, 200);
        auto *layout = new QVBoxLayout(window);
        layout->addWidget(new QLabel(QStringLiteral("text"), window));
        extra = new QLabel(window);
        extra->setMinimumHeight(300);
        extra->hide();
        layout->addWidget(extra);
        return window;
    }
    void windowDidLoad() override { ++didLoads; }
    bool windowShouldClose() override
    {
        if (onClose)
            onClose();
        return closes;
    }
};
} // namespace

class TestWindowController : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void loadsOnFirstUse();
    void closingAsks();
    void survivesItsEndWhileShown();
    void mayEndInsideItsOwnClose();
    void mayEndInsideItsOwnButton();
    void dressesTheWindow();
    void keepsItsSizeAndGrowsForContent();
    void terminateGoesToTheHandler();
};

REGISTER_TEST(TestWindowController)

void TestWindowController::loadsOnFirstUse()
{
    Controller controller;
    QVERIFY(!controller.isWindowLoaded());
    QVERIFY(!controller.isVisible());
    controller.close();
    QVERIFY(!controller.isWindowLoaded());
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

void TestWindowController::closingAsks()
{
    Controller controller;
    int asked = 0;
    controller.onClose = [&asked] { ++asked; };
    controller.showWindow();
    controller.closes = false;
    QVERIFY(!controller.window()->close());
    QVERIFY(controller.isVisible());
    QCOMPARE(asked, 1);
    controller.closes = true;
    QVERIFY(controller.window()->close());
    QVERIFY(!controller.isVisible());
    QCOMPARE(asked, 2);
    controller.showWindow();
    QVERIFY(controller.isVisible());
    controller.close();
    QCOMPARE(asked, 2);
}

void TestWindowController::survivesItsEndWhileShown()
{
    auto controller = std::make_unique<Controller>();
    controller->showWindow();
    const QPointer<QWidget> window(controller->window());
    controller.reset();
    QVERIFY(!window || !window->isVisible());
    QTRY_VERIFY(!window);
}

void TestWindowController::mayEndInsideItsOwnClose()
{
    auto controller = std::make_unique<Controller>();
    controller->onClose = [&controller] { controller.reset(); };
    controller->showWindow();
    const QPointer<QWidget> window(controller->window());
    window->close();
    QVERIFY(!controller);
    QTRY_VERIFY(!window);
}

void TestWindowController::mayEndInsideItsOwnButton()
{
    auto controller = std::make_unique<Controller>();
    auto *button = new QPushButton(controller->window());
    connect(button, &QPushButton::clicked, this, [&controller] { controller.reset(); });
    controller->showWindow();
    button->show();
    const QPointer<QWidget> window(controller->window());
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!controller);
    QTRY_VERIFY(!window);
}

void TestWindowController::dressesTheWindow()
{
    Controller controller;
    const QWidget *window = controller.window();
    QCOMPARE(window->palette().color(QPalette::Window), QColor(Qt::white));
    QVERIFY(window->windowFlags() & Qt::WindowCloseButtonHint);
    QVERIFY(!(window->windowFlags() & Qt::WindowMinMaxButtonsHint));
    QVERIFY(!window->windowTitle().isEmpty());
}

void TestWindowController::keepsItsSizeAndGrowsForContent()
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

void TestWindowController::terminateGoesToTheHandler()
{
    int asked = 0;
    Application::setTerminateHandler([&asked] { ++asked; });
    Application::terminate();
    QCOMPARE(asked, 1);
    Application::setTerminateHandler({});
}

#include "TestWindowController.moc"
