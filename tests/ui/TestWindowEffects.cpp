#include "support/TestMain.h"
#include "ui/WindowAnimator.h"
#include "ui/WindowShake.h"
#include "ui/animation/DisplayRefresh.h"

#include <QTest>

#include <algorithm>

namespace
{
/// Records where its window was, and can refuse to be moved as a tiling window manager does.
class MovedWindow : public QWidget
{
public:
    QList<int> places;
    bool refuses = false;
    QPoint home;

protected:
    void moveEvent(QMoveEvent *event) override
    {
        places.append(event->pos().x());
        if (refuses && pos() != home)
            move(home);
    }
};
} // namespace

/// The shake of a refusing window and the flip from one window to the next.
class TestWindowEffects : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { DisplayRefresh::shared().setReducedMotion(false); }
    void cleanup() { DisplayRefresh::shared().setReducedMotion({}); }
    void shakePath_data();
    void shakePath();
    void shakeReturnsToTheStart();
    void shakeTwiceReturnsToTheFirstStart();
    void shakesTheContentOfAnImmovableWindow();
    void shakeEndsWithItsWindow();
    void flipHandsThePlaceOver();
    void flipWithoutPredecessor();
    void noMotionWhereNoneIsWanted();
    void flipMayBeInterrupted_data();
    void flipMayBeInterrupted();
};

REGISTER_TEST(TestWindowEffects)

void TestWindowEffects::shakePath_data()
{
    QTest::addColumn<double>("progress");
    QTest::addColumn<double>("distance");
    QTest::newRow("start") << 0.0 << 0.0;
    QTest::newRow("half way left") << 0.1 << -6.0;
    QTest::newRow("left") << 0.2 << -12.0;
    QTest::newRow("right") << 0.4 << 12.0;
    QTest::newRow("left again") << 0.6 << -12.0;
    QTest::newRow("right again") << 0.8 << 12.0;
    QTest::newRow("end") << 1.0 << 0.0;
    QTest::newRow("beyond") << 1.5 << 0.0;
}

void TestWindowEffects::shakePath()
{
    QFETCH(double, progress);
    QFETCH(double, distance);
    QVERIFY(qAbs(WindowShake::offset(progress, 200) - distance) < 1e-6);
}

void TestWindowEffects::shakeReturnsToTheStart()
{
    MovedWindow window;
    window.setGeometry(200, 100, 200, 100);
    window.show();
    const QPoint start = window.pos();
    window.places.clear();
    WindowShake::shake(&window);
    QVERIFY(WindowShake::isShaking(&window));
    QTRY_VERIFY(!WindowShake::isShaking(&window));
    QCOMPARE(window.pos(), start);
    QVERIFY(!window.graphicsEffect());
    // A host may count a border of a few points in or out.
    const auto [left, right] = std::minmax_element(window.places.begin(), window.places.end());
    QVERIFY(*left < start.x() - 4 && *left >= start.x() - 12 - 4);
    QVERIFY(*right > start.x() + 4 && *right <= start.x() + 12 + 4);
}

void TestWindowEffects::shakeTwiceReturnsToTheFirstStart()
{
    MovedWindow window;
    window.setGeometry(200, 100, 200, 100);
    window.show();
    const QPoint start = window.pos();
    WindowShake::shake(&window);
    QTRY_VERIFY(window.x() != start.x());
    WindowShake::shake(&window);
    QCOMPARE(window.x(), start.x());
    QTRY_VERIFY(!WindowShake::isShaking(&window));
    QCOMPARE(window.pos(), start);
}

void TestWindowEffects::shakesTheContentOfAnImmovableWindow()
{
    MovedWindow window;
    window.setGeometry(200, 100, 200, 100);
    QWidget content(&window);
    content.setPalette(QPalette(Qt::red, Qt::red));
    content.setAutoFillBackground(true);
    content.resize(200, 100);
    window.show();
    window.home = window.pos();
    window.refuses = true;
    WindowShake::shake(&window);
    const auto edge = [&window](int x) { return window.grab().toImage().pixelColor(x, 50); };
    QTRY_VERIFY(edge(0) == QColor(Qt::white) || edge(199) == QColor(Qt::white));
    QTRY_VERIFY(!WindowShake::isShaking(&window));
    QVERIFY(!window.graphicsEffect());
    QCOMPARE(edge(0), QColor(Qt::red));
    QCOMPARE(window.pos(), window.home);
}

void TestWindowEffects::shakeEndsWithItsWindow()
{
    WindowShake::shake(nullptr);
    auto window = std::make_unique<QWidget>();
    WindowShake::shake(window.get());
    QVERIFY(!WindowShake::isShaking(window.get()));
    window->setGeometry(200, 100, 200, 100);
    window->show();
    const int start = window->x();
    WindowShake::shake(window.get());
    QTRY_VERIFY(window->x() != start);
    window->hide();
    QTRY_VERIFY(!WindowShake::isShaking(window.get()));
    QCOMPARE(window->x(), start);
    window->show();
    WindowShake::shake(window.get());
    window.reset();
    QTest::qWait(0);
}

void TestWindowEffects::flipHandsThePlaceOver()
{
    QWidget from;
    from.setGeometry(200, 150, 200, 100);
    from.show();
    QWidget to;
    to.resize(100, 80);
    WindowAnimator animator;
    animator.setFlipRight(false);
    QVERIFY(!animator.isFlipRight());
    animator.flip(&from, &to);
    QVERIFY(to.isVisible());
    QVERIFY(!from.isVisible());
    QVERIFY((to.frameGeometry().center() - from.frameGeometry().center()).manhattanLength() <= 2);
    QVERIFY(animator.isFlipping());
    QTRY_VERIFY(!animator.isFlipping());
    QVERIFY(to.findChildren<QWidget *>().isEmpty());
}

void TestWindowEffects::flipWithoutPredecessor()
{
    QWidget to;
    QWidget hidden;
    WindowAnimator animator;
    animator.flip(&hidden, nullptr);
    animator.flip(&hidden, &to);
    QVERIFY(to.isVisible());
    QVERIFY(!animator.isFlipping());
    to.hide();
    animator.flip(nullptr, &to);
    QVERIFY(to.isVisible());
    animator.flip(&to, &to);
    QVERIFY(to.isVisible());
}

void TestWindowEffects::noMotionWhereNoneIsWanted()
{
    DisplayRefresh::shared().setReducedMotion(true);
    QWidget from;
    QWidget to;
    from.show();
    WindowShake::shake(&from);
    QVERIFY(!WindowShake::isShaking(&from));
    WindowAnimator animator;
    animator.flip(&from, &to);
    QVERIFY(to.isVisible());
    QVERIFY(!from.isVisible());
    QVERIFY(!animator.isFlipping());
    QVERIFY(!DisplayRefresh::shared().isTicking());
}

void TestWindowEffects::flipMayBeInterrupted_data()
{
    QTest::addColumn<QString>("interruption");
    for (const char *name : {"back", "third", "close", "destroy new", "destroy old", "destroy animator"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestWindowEffects::flipMayBeInterrupted()
{
    QFETCH(QString, interruption);
    auto first = std::make_unique<QWidget>();
    auto second = std::make_unique<QWidget>();
    QWidget third;
    auto animator = std::make_unique<WindowAnimator>();
    first->show();
    animator->flip(first.get(), second.get());
    QTest::qWait(30);
    QVERIFY(animator->isFlipping());
    QWidget *expected = second.get();
    if (interruption == QLatin1String("back")) {
        animator->flip(second.get(), first.get());
        expected = first.get();
    } else if (interruption == QLatin1String("third")) {
        animator->flip(second.get(), &third);
        expected = &third;
    } else if (interruption == QLatin1String("close")) {
        second->close();
        animator->flip(second.get(), first.get());
        expected = first.get();
    } else if (interruption == QLatin1String("destroy new")) {
        second.reset();
        animator->flip(nullptr, first.get());
        expected = first.get();
    } else if (interruption == QLatin1String("destroy old")) {
        first.reset();
    } else {
        animator.reset();
        QVERIFY(second->findChildren<QWidget *>().isEmpty());
    }
    QTRY_VERIFY(!animator || !animator->isFlipping());
    QWidgetList visible;
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->isVisible())
            visible.append(window);
    QCOMPARE(visible, QWidgetList{expected});
}

#include "TestWindowEffects.moc"
