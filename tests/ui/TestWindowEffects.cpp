#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/WindowAnimator.h"
#include "ui/WindowShake.h"
#include "ui/animation/DisplayRefresh.h"

#include <algorithm>

namespace
{
/// A window on show that records where it was, and can refuse to be moved as a tiling window manager does.
class MovedWindow : public QWidget
{
public:
    MovedWindow()
    {
        setGeometry(200, 100, 200, 100);
        show();
        home = pos();
        places.clear();
    }

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

struct Path {
    const char *name;
    double progress;
    double distance;
};

const QList<Path> shakePaths{
    {"start", 0.0, 0.0},        {"half way left", 0.1, -6.0}, {"left", 0.2, -12.0}, {"right", 0.4, 12.0},
    {"left again", 0.6, -12.0}, {"right again", 0.8, 12.0},   {"end", 1.0, 0.0},    {"beyond", 1.5, 0.0},
};

/// A flip from the first window to the second.
struct Flip {
    Flip()
    {
        first->show();
        animator->flip(first.get(), second.get());
    }

    std::unique_ptr<QWidget> first = std::make_unique<QWidget>();
    std::unique_ptr<QWidget> second = std::make_unique<QWidget>();
    QWidget third;
    std::unique_ptr<WindowAnimator> animator = std::make_unique<WindowAnimator>();
};

struct Interruption {
    const char *name;
    /// Gives the window that has to be on show in the end.
    QWidget *(*interrupt)(Flip &flip);
};

const QList<Interruption> interruptions{
    {"back",
     [](Flip &flip) {
         flip.animator->flip(flip.second.get(), flip.first.get());
         return flip.first.get();
     }},
    {"third",
     [](Flip &flip) {
         flip.animator->flip(flip.second.get(), &flip.third);
         return &flip.third;
     }},
    {"close",
     [](Flip &flip) {
         flip.second->close();
         flip.animator->flip(flip.second.get(), flip.first.get());
         return flip.first.get();
     }},
    {"destroy new",
     [](Flip &flip) {
         flip.second.reset();
         flip.animator->flip(nullptr, flip.first.get());
         return flip.first.get();
     }},
    {"destroy old",
     [](Flip &flip) {
         flip.first.reset();
         return flip.second.get();
     }},
    {"destroy animator",
     [](Flip &flip) {
         flip.animator.reset();
         return flip.second.get();
     }},
};
} // namespace

/// The shake of a refusing window and the flip from one window to the next.
class TestWindowEffects : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { DisplayRefresh::shared().setReducedMotion(false); }
    void cleanup() { DisplayRefresh::shared().setReducedMotion({}); }

    void shakePath_data() { testing::addCases(shakePaths); }
    void shakePath()
    {
        const auto &[name, progress, distance] = testing::currentCase(shakePaths);
        QVERIFY(qAbs(WindowShake::offset(progress, 200) - distance) < 1e-6);
    }

    void shakeReturnsToTheStart()
    {
        MovedWindow window;
        WindowShake::shake(&window);
        QVERIFY(WindowShake::isShaking(&window));
        QTRY_VERIFY(!WindowShake::isShaking(&window));
        QCOMPARE(window.pos(), window.home);
        QVERIFY(!window.graphicsEffect());
        // A host may count a border of a few points in or out.
        const auto [left, right] = std::minmax_element(window.places.begin(), window.places.end());
        const int start = window.home.x();
        QVERIFY(*left < start - 4 && *left >= start - 12 - 4);
        QVERIFY(*right > start + 4 && *right <= start + 12 + 4);
    }

    void shakeTwiceReturnsToTheFirstStart()
    {
        MovedWindow window;
        WindowShake::shake(&window);
        QTRY_VERIFY(window.x() != window.home.x());
        WindowShake::shake(&window);
        QCOMPARE(window.x(), window.home.x());
        QTRY_VERIFY(!WindowShake::isShaking(&window));
        QCOMPARE(window.pos(), window.home);
    }

    void shakesTheContentOfAnImmovableWindow()
    {
        MovedWindow window;
        QWidget content(&window);
        content.setPalette(QPalette(Qt::red, Qt::red));
        content.setAutoFillBackground(true);
        content.resize(200, 100);
        content.show();
        window.refuses = true;
        WindowShake::shake(&window);
        const auto edge = [&window](int x) { return window.grab().toImage().pixelColor(x, 50); };
        QTRY_VERIFY(edge(0) == QColor(Qt::white) || edge(199) == QColor(Qt::white));
        QTRY_VERIFY(!WindowShake::isShaking(&window));
        QVERIFY(!window.graphicsEffect());
        QCOMPARE(edge(0), QColor(Qt::red));
        QCOMPARE(window.pos(), window.home);
    }

    void shakeEndsWithItsWindow()
    {
        WindowShake::shake(nullptr);
        QWidget hidden;
        WindowShake::shake(&hidden);
        QVERIFY(!WindowShake::isShaking(&hidden));
        auto window = std::make_unique<MovedWindow>();
        WindowShake::shake(window.get());
        QTRY_VERIFY(window->x() != window->home.x());
        window->hide();
        QTRY_VERIFY(!WindowShake::isShaking(window.get()));
        QCOMPARE(window->x(), window->home.x());
        window->show();
        WindowShake::shake(window.get());
        window.reset();
        QTest::qWait(0);
    }

    void flipHandsThePlaceOver()
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
        QVERIFY(to.isVisible() && !from.isVisible());
        QVERIFY((to.frameGeometry().center() - from.frameGeometry().center()).manhattanLength() <= 2);
        QVERIFY(animator.isFlipping());
        QTRY_VERIFY(!animator.isFlipping());
        QVERIFY(to.findChildren<QWidget *>().isEmpty());
    }

    void flipWithoutPredecessor()
    {
        QWidget to;
        QWidget hidden;
        WindowAnimator animator;
        animator.flip(&hidden, nullptr);
        for (QWidget *from : {&hidden, static_cast<QWidget *>(nullptr)}) {
            animator.flip(from, &to);
            QVERIFY(to.isVisible() && !animator.isFlipping());
            to.hide();
        }
        to.show();
        animator.flip(&to, &to);
        QVERIFY(to.isVisible());
    }

    void noMotionWhereNoneIsWanted()
    {
        DisplayRefresh::shared().setReducedMotion(true);
        QWidget from;
        QWidget to;
        from.show();
        WindowShake::shake(&from);
        QVERIFY(!WindowShake::isShaking(&from));
        WindowAnimator animator;
        animator.flip(&from, &to);
        QVERIFY(to.isVisible() && !from.isVisible());
        QVERIFY(!animator.isFlipping());
        QVERIFY(!DisplayRefresh::shared().isTicking());
    }

    void flipMayBeInterrupted_data() { testing::addCases(interruptions); }
    void flipMayBeInterrupted()
    {
        const auto &[name, interrupt] = testing::currentCase(interruptions);
        Flip flip;
        QTest::qWait(30);
        QVERIFY(flip.animator->isFlipping());
        QWidget *expected = interrupt(flip);
        QTRY_VERIFY(!flip.animator || !flip.animator->isFlipping());
        QVERIFY(expected->findChildren<QWidget *>().isEmpty());
        QWidgetList visible;
        for (QWidget *window : QApplication::topLevelWidgets())
            if (window->isVisible())
                visible.append(window);
        QCOMPARE(visible, QWidgetList{expected});
    }
};

REGISTER_TEST(TestWindowEffects)
#include "TestWindowEffects.moc"
