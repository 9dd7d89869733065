#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/QBBox.h"
#include "ui/animation/BasicAnimation.h"
#include "ui/animation/CustomAnimation.h"
#include "ui/animation/DecayAnimation.h"
#include "ui/animation/SpringAnimation.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace
{
/// A refresh whose time the test moves.
struct ManualRefresh : DisplayRefresh {
    ManualRefresh() { setReducedMotion(false); }
    double now() const override { return time; }
    void setTicking(bool ticks) override
    {
        DisplayRefresh::setTicking(ticks);
        starts += ticks;
    }
    void pass(double seconds, double frame = 1.0 / 60)
    {
        for (const double end = time + seconds; time < end - 1e-9;) {
            time = std::min(end, time + frame);
            tick();
        }
    }

    double time = 100;
    int starts = 0;
};

/// A number that an animation moves, all it has been, and how the animation ended each time.
template <class Kind> struct Moved : QObject {
    template <class... More>
    explicit Moved(ManualRefresh &refresh, const More &...more)
        : animation(AnimatedProperty::number(this, [this](double value) { seen.append(value); }), more..., nullptr,
                    refresh)
    {
        connect(&animation, &Animation::finished, this, [this](bool complete) { ends.append(complete); });
    }
    double value() const { return seen.isEmpty() ? 0 : seen.constLast(); }
    double highest() const { return *std::max_element(seen.begin(), seen.end()); }

    QList<double> seen;
    QList<bool> ends;
    Kind animation;
};

/// From where it is to `to`, evenly and in a second.
struct Even : Moved<BasicAnimation> {
    explicit Even(ManualRefresh &refresh, double to = 1) : Moved(refresh)
    {
        animation.setTo(to);
        animation.setDuration(1);
        animation.setEasing(QEasingCurve::Linear);
    }
};

struct Spring {
    const char *name;
    double damping;
    double frame;
    bool overshoots;
};

const QList<Spring> springs{
    {"swinging", 0.3, 1.0 / 60, true},
    {"swinging, few frames", 0.3, 0.2, true},
    {"critical", 1.0, 1.0 / 60, false},
    {"more than critical", 3.0, 1.0 / 60, false},
};

struct Property {
    const char *name;
    QVariant from, to, half;
};

const QList<Property> movedProperties{
    {"minimumHeight", 10, 21, 16},
    {"cornerRadius", 0.0, 3.0, 1.5},
    {"pos", QPoint(0, 10), QPoint(20, 20), QPoint(10, 15)},
    {"size", QSize(20, 20), QSize(40, 80), QSize(30, 50)},
    {"geometry", QRect(0, 0, 20, 20), QRect(10, 20, 40, 60), QRect(5, 10, 30, 40)},
    {"borderColor", QColor(Qt::black), QColor(Qt::white), QColor::fromRgbF(0.5F, 0.5F, 0.5F)},
};

struct Loss {
    const char *name;
    bool ofTarget;
    bool withinStep;
};

const QList<Loss> losses{
    {"target between steps", true, false},
    {"target within a step", true, true},
    {"animation between steps", false, false},
    {"animation within a step", false, true},
};
} // namespace

/// The animation engine, with a clock of the test's own.
class TestAnimation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void easing()
    {
        ManualRefresh refresh;
        Even moved(refresh, 100);
        moved.animation.setEasing(QEasingCurve::InQuad);
        moved.animation.start();
        refresh.pass(0.25, 0.125);
        QCOMPARE(moved.value(), 6.25);
        refresh.pass(10, 10); // one very late frame lands on the end and not beyond
        QCOMPARE(moved.value(), 100.0);
        moved.animation.setFrom(50);
        moved.animation.start();
        refresh.pass(1e-6);
        QVERIFY(std::abs(moved.value() - 50) < 0.01);
    }

    void retarget()
    {
        ManualRefresh refresh;
        Even moved(refresh, 100);
        moved.animation.setFrom(0);
        moved.animation.start();
        refresh.pass(0.5, 0.125);
        moved.animation.setTo(0);
        refresh.pass(0.5, 0.125);
        QCOMPARE(moved.value(), 25.0);
        refresh.pass(0.5, 0.125);
        QCOMPARE(moved.value(), 0.0);
        QCOMPARE(moved.ends, QList<bool>{true});
    }

    void spring_data() { testing::addCases(springs); }
    void spring()
    {
        const auto &[name, damping, frame, overshoots] = testing::currentCase(springs);
        ManualRefresh refresh;
        Moved<SpringAnimation> moved(refresh);
        moved.animation.setTo(100);
        moved.animation.setDampingRatio(damping);
        moved.animation.start();
        refresh.pass(10, frame);
        QCOMPARE(moved.ends, QList<bool>{true});
        QCOMPARE(moved.value(), 100.0);
        QCOMPARE(moved.highest() > 100.5, overshoots);
        // The first swing beyond the goal is what the damping says.
        if (frame < 0.1 && damping < 1) {
            const double share = std::exp(-damping * M_PI / std::sqrt(1 - damping * damping));
            QVERIFY2(std::abs(moved.highest() - 100 * (1 + share)) < 1, qPrintable(QString::number(moved.highest())));
        }
    }

    void springKeepsItsSpeed()
    {
        ManualRefresh refresh;
        Moved<SpringAnimation> moved(refresh);
        moved.animation.setTo(100);
        moved.animation.setDampingRatio(1);
        moved.animation.start();
        refresh.pass(0.1, 0.01);
        const double before = moved.value();
        moved.animation.setTo(-100);
        refresh.pass(0.01, 0.01);
        QVERIFY2(moved.value() > before, "the movement stopped dead when its goal changed");
        refresh.pass(5);
        QCOMPARE(moved.value(), -100.0);

        moved.animation.setVelocity(1000);
        moved.animation.start();
        refresh.pass(0.01);
        QVERIFY(moved.value() > -100);
    }

    void decay()
    {
        ManualRefresh refresh;
        Moved<DecayAnimation> moved(refresh);
        moved.animation.setVelocity(400);
        moved.animation.setTimeConstant(0.25);
        moved.animation.start();
        QCOMPARE(moved.animation.restValue().first(), 100.0);
        refresh.pass(0.25, 0.25);
        QVERIFY(std::abs(moved.value() - 100 * (1 - std::exp(-1))) < 1e-6);
        refresh.pass(5);
        QCOMPARE(moved.value(), 100.0);
        QCOMPARE(moved.highest(), 100.0);
        QCOMPARE(moved.ends, QList<bool>{true});
    }

    void custom()
    {
        ManualRefresh refresh;
        const auto step = [](double seconds, AnimationValue &value) {
            value = value.first() + seconds * 10;
            return seconds < 1;
        };
        Moved<CustomAnimation> moved(refresh, step);
        moved.animation.start();
        refresh.pass(0.5, 0.25);
        QCOMPARE(moved.value(), 5.0);
        refresh.pass(3, 0.25);
        QCOMPARE(moved.value(), 10.0);
        QCOMPARE(moved.ends, QList<bool>{true});
    }

    void properties_data() { testing::addCases(movedProperties); }
    void properties()
    {
        const auto &[name, from, to, half] = testing::currentCase(movedProperties);
        ManualRefresh refresh;
        QWidget window;
        QBBox box(&window);
        box.setProperty(name, from);
        BasicAnimation animation(AnimatedProperty::named(&box, name), nullptr, refresh);
        animation.setTo(*AnimationValue::of(to));
        animation.setDuration(1);
        animation.setEasing(QEasingCurve::Linear);
        animation.start();
        refresh.pass(0.5, 0.5);
        QCOMPARE(box.property(name), half);
        refresh.pass(0.5, 0.5);
        QCOMPARE(box.property(name), to);
        QVERIFY(!AnimationValue::of(QStringLiteral("text")));
    }

    void delayAndPause()
    {
        ManualRefresh refresh;
        Even moved(refresh, 100);
        moved.animation.setDelay(1);
        moved.animation.start();
        refresh.pass(0.75, 0.25);
        QVERIFY(moved.seen.isEmpty());
        refresh.pass(0.75, 0.25);
        QCOMPARE(moved.value(), 50.0);
        moved.animation.pause();
        moved.animation.pause();
        QVERIFY(!refresh.isTicking());
        refresh.pass(5);
        QCOMPARE(moved.value(), 50.0);
        moved.animation.resume();
        moved.animation.resume();
        refresh.pass(0.25, 0.25);
        QCOMPARE(moved.value(), 75.0);
    }

    void endsOnce()
    {
        ManualRefresh refresh;
        Even moved(refresh);
        moved.animation.stop();
        QCOMPARE(moved.ends, QList<bool>());
        moved.animation.start();
        moved.animation.start();
        moved.animation.pause();
        moved.animation.stop();
        moved.animation.stop();
        moved.animation.resume();
        refresh.pass(5);
        QCOMPARE(moved.ends, QList<bool>({false, false}));
        moved.animation.start();
        refresh.pass(5);
        QCOMPARE(moved.ends, QList<bool>({false, false, true}));
    }

    void gone_data() { testing::addCases(losses); }
    void gone()
    {
        const auto &[name, ofTarget, withinStep] = testing::currentCase(losses);
        ManualRefresh refresh;
        auto target = std::make_unique<QObject>();
        std::unique_ptr<BasicAnimation> animation;
        const auto destroy = [&target, &animation, targetFirst = ofTarget] {
            if (targetFirst)
                target.reset();
            else
                animation.reset();
        };
        int writes = 0;
        const auto write = [&writes, &destroy, early = withinStep](double) {
            if (++writes == 2 && early)
                destroy();
        };
        animation = std::make_unique<BasicAnimation>(AnimatedProperty::number(target.get(), write), nullptr, refresh);
        QList<bool> ends;
        connect(animation.get(), &Animation::finished, this, [&](bool complete) { ends.append(complete); });
        animation->setDuration(1);
        animation->setTo(1);
        animation->start();
        Even neighbour(refresh); // what else is moved goes on
        neighbour.animation.start();
        refresh.pass(0.2, 0.1);
        if (!withinStep)
            destroy();
        refresh.pass(3, 0.1);
        QCOMPARE(writes, 2);
        QCOMPARE(ends, ofTarget ? QList<bool>{false} : QList<bool>());
        QCOMPARE(neighbour.value(), 1.0);
        QVERIFY(!refresh.isTicking());
    }

    void restartedAtItsEnd()
    {
        ManualRefresh refresh;
        Even moved(refresh);
        connect(&moved.animation, &Animation::finished, this, [&] {
            if (moved.ends.size() < 3)
                moved.animation.start();
        });
        moved.animation.start();
        refresh.pass(10, 0.25);
        QCOMPARE(moved.ends.size(), 3);
        QVERIFY(!moved.animation.isRunning());
    }

    void reducedMotion()
    {
        ManualRefresh refresh;
        refresh.setReducedMotion(true);
        Moved<SpringAnimation> moved(refresh);
        moved.animation.setTo(100);
        moved.animation.start();
        refresh.pass(0.02);
        QCOMPARE(moved.seen, QList<double>{100});
        QCOMPARE(moved.ends, QList<bool>{true});
    }

    void idleCostsNothing()
    {
        ManualRefresh refresh;
        Even first(refresh);
        Moved<SpringAnimation> second(refresh);
        second.animation.setTo(1);
        QVERIFY(!refresh.isTicking());
        first.animation.start();
        second.animation.start();
        QVERIFY(refresh.isTicking());
        refresh.pass(20);
        QVERIFY(!refresh.isTicking());
        QCOMPARE(refresh.starts, 1);
    }
};

REGISTER_TEST(TestAnimation)
#include "TestAnimation.moc"
