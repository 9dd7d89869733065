#include "EveryWindow.h"
#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/animation/DisplayRefresh.h"

#include <QSet>

using namespace testing;

namespace
{
constexpr int Rounds = 50;

/// Everything queued for windows that are going or gone.
void runLateWork()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool takesTab(const QWidget &control)
{
    return control.isVisible() && control.isEnabled() && (control.focusPolicy() & Qt::TabFocus) &&
           !control.focusProxy();
}

/// The controls of a window that the keyboard has to reach.
QWidgetList tabStops(const QWidget &window)
{
    QWidgetList stops;
    for (QWidget *control : window.findChildren<QWidget *>())
        if (control->window() == &window && takesTab(*control))
            stops.append(control);
    return stops;
}
/// The window once it looks as meant, null when that does not come.
QWidget *settled(const KnownWindow &known, ServedScene &scene, const KnownWindow::Controller &controller)
{
    QWidget *window = controller->window();
    const auto looksAsMeant = [&] {
        return controller->isVisible() && (!known.settle || known.settle(scene, *window));
    };
    return QTest::qWaitFor(looksAsMeant, 10'000) ? window : nullptr;
}
} // namespace

/// What every window of the application has to bear.
class TestEveryWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { DisplayRefresh::shared().setReducedMotion(false); }

    void opensAndCloses_data() { addCases(everyWindow()); }
    void opensAndCloses()
    {
        const KnownWindow known = currentCase(everyWindow());
        ServedScene scene(known.scenario);
        qsizetype widgets = 0;
        for (int round = 0; round < Rounds; ++round) {
            KnownWindow::Controller controller = known.open(scene);
            if (round % 10 == 9)
                QVERIFY(settled(known, scene, controller));
            else
                QTest::qWait(round % 5); // some answers are under way, some have come, some windows are not up yet
            if (round % 2)
                controller->window()->close();
            if (round % 3)
                runLateWork();
            controller.reset();
            runLateWork();
            if (round == 2)
                widgets = QApplication::allWidgets().size();
        }
        QTRY_VERIFY2(
            QApplication::allWidgets().size() <= widgets,
            qPrintable(QStringLiteral("%1 widgets, %2 at first").arg(QApplication::allWidgets().size()).arg(widgets)));
        QVERIFY(!DisplayRefresh::shared().isTicking());
    }

    void keyboardReachesEverything_data() { addCases(everyWindow()); }
    void keyboardReachesEverything()
    {
        const KnownWindow known = currentCase(everyWindow());
        ServedScene scene(known.scenario);
        const KnownWindow::Controller controller = known.open(scene);
        QWidget *window = settled(known, scene, controller);
        QVERIFY(window);
        QTRY_VERIFY(!DisplayRefresh::shared().isTicking()); // quiet while idle
        if (QMessageBox *alert = LoginScene::alert())
            window = alert;
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        const QWidgetList stops = tabStops(*window);
        for (const QWidget *stop : stops)
            QVERIFY2(!stop->accessibleName().isEmpty() || !stop->property("text").toString().isEmpty(),
                     qPrintable(stop->objectName() + QLatin1String(" has no spoken name")));

        for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
            QSet<QWidget *> reached;
            for (qsizetype press = 0; press < 2 * stops.size() + 2 && window->focusWidget(); ++press) {
                reached.insert(window->focusWidget());
                QTest::keyClick(window->focusWidget(), key,
                                key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
            }
            // With a picture code Tab goes round the three fields; the way to the rest is Shift+Tab.
            if (key == Qt::Key_Tab && window->findChild<QWidget *>(QStringLiteral("txtVcode")) &&
                LoginScene::shows(window, "txtVcode")) {
                QCOMPARE(reached.size(), 3);
                continue;
            }
            for (QWidget *stop : stops)
                QVERIFY2(reached.contains(stop), qPrintable(stop->objectName() + QLatin1String(" is out of reach")));
        }
        if (QMessageBox *alert = LoginScene::alert())
            alert->close();
    }
};

REGISTER_TEST(TestEveryWindow)
#include "TestEveryWindow.moc"
