#include "support/TestMain.h"
#include "ui/QBBox.h"
#include "ui/animation/BasicAnimation.h"
#include "ui/animation/CustomAnimation.h"
#include "ui/animation/DecayAnimation.h"
#include "ui/animation/SpringAnimation.h"

#include <QSignalSpy>
#include <QTest>

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

/// A number that is moved, and all it has been.
struct Number : QObject {
    AnimatedProperty property()
    {
        return AnimatedProperty::number(this, [this](double value) { seen.append(value); });
    }
    double value() const { return seen.isEmpty() ? 0 : seen.constLast(); }
    double highest() const { return *std::max_element(seen.begin(), seen.end()); }

    QList<double> seen;
};

QList<bool> ends(const QSignalSpy &spy)
{
    QList<bool> all;
    for (const QVariantList &arguments : spy)
        all.append(arguments.constFirst().toBool());
    return all;
}
} // namespace

/// The animation engine, with a clock of the test's own.
class TestAnimation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void easing();
    void retarget();
    void spring_data();
    void spring();
    void springKeepsItsSpeed();
    void decay();
    void custom();
    void properties_data();
    void properties();
    void delayAndPause();
    void endsOnce();
    void gone_data();
    void gone();
    void restartedAtItsEnd();
    void reducedMotion();
    void idleCostsNothing();
};

REGISTER_TEST(TestAnimation)

void TestAnimation::easing()
{
    ManualRefresh refresh;
    Number number;
    BasicAnimation animation(number.property(), nullptr, refresh);
    animation.setTo(100);
    animation.setDuration(2);
    animation.setEasing(QEasingCurve::InQuad);
    animation.start();
    refresh.pass(0.5, 0.125);
    QCOMPARE(number.value(), 6.25);
    refresh.pass(10, 10); // one very late frame lands on the end and not beyond
    QCOMPARE(number.value(), 100.0);
    animation.setFrom(50);
    animation.start();
    refresh.pass(1e-6);
    QVERIFY(std::abs(number.value() - 50) < 0.01);
}

void TestAnimation::retarget()
{
    ManualRefresh refresh;
    Number number;
    BasicAnimation animation(number.property(), nullptr, refresh);
    QSignalSpy finished(&animation, &Animation::finished);
    animation.setFrom(0);
    animation.setTo(100);
    animation.setDuration(1);
    animation.setEasing(QEasingCurve::Linear);
    animation.start();
    refresh.pass(0.5, 0.125);
    animation.setTo(0);
    refresh.pass(0.5, 0.125);
    QCOMPARE(number.value(), 25.0);
    refresh.pass(0.5, 0.125);
    QCOMPARE(number.value(), 0.0);
    QCOMPARE(ends(finished), QList<bool>{true});
}

void TestAnimation::spring_data()
{
    QTest::addColumn<double>("damping");
    QTest::addColumn<double>("frame");
    QTest::addColumn<bool>("overshoots");
    QTest::newRow("swinging") << 0.3 << 1.0 / 60 << true;
    QTest::newRow("swinging, few frames") << 0.3 << 0.2 << true;
    QTest::newRow("critical") << 1.0 << 1.0 / 60 << false;
    QTest::newRow("more than critical") << 3.0 << 1.0 / 60 << false;
}

void TestAnimation::spring()
{
    QFETCH(double, damping);
    QFETCH(double, frame);
    ManualRefresh refresh;
    Number number;
    SpringAnimation animation(number.property(), nullptr, refresh);
    QSignalSpy finished(&animation, &Animation::finished);
    animation.setTo(100);
    animation.setDampingRatio(damping);
    animation.start();
    refresh.pass(10, frame);
    QCOMPARE(ends(finished), QList<bool>{true});
    QCOMPARE(number.value(), 100.0);
    QTEST(number.highest() > 100.5, "overshoots");
    // The first swing beyond the goal is what the damping says.
    if (frame < 0.1 && damping < 1) {
        const double share = std::exp(-damping * M_PI / std::sqrt(1 - damping * damping));
        QVERIFY2(std::abs(number.highest() - 100 * (1 + share)) < 1, qPrintable(QString::number(number.highest())));
    }
}

void TestAnimation::springKeepsItsSpeed()
{
    ManualRefresh refresh;
    Number number;
    SpringAnimation animation(number.property(), nullptr, refresh);
    animation.setTo(100);
    animation.setDampingRatio(1);
    animation.start();
    refresh.pass(0.1, 0.01);
    const double before = number.value();
    animation.setTo(-100);
    refresh.pass(0.01, 0.01);
    QVERIFY2(number.value() > before, "the movement stopped dead when its goal changed");
    refresh.pass(5);
    QCOMPARE(number.value(), -100.0);

    animation.setVelocity(1000);
    animation.setTo(-100);
    animation.start();
    refresh.pass(0.01);
    QVERIFY(number.value() > -100);
}

void TestAnimation::decay()
{
    ManualRefresh refresh;
    Number number;
    DecayAnimation animation(number.property(), nullptr, refresh);
    QSignalSpy finished(&animation, &Animation::finished);
    animation.setVelocity(400);
    animation.setTimeConstant(0.25);
    animation.start();
    QCOMPARE(animation.restValue().first(), 100.0);
    refresh.pass(0.25, 0.25);
    QVERIFY(std::abs(number.value() - 100 * (1 - std::exp(-1))) < 1e-6);
    refresh.pass(5);
    QCOMPARE(number.value(), 100.0);
    QCOMPARE(ends(finished), QList<bool>{true});
    QCOMPARE(number.highest(), 100.0);
}

void TestAnimation::custom()
{
    ManualRefresh refresh;
    Number number;
    const auto step = [](double seconds, AnimationValue &value) {
        value = value.first() + seconds * 10;
        return seconds < 1;
    };
    CustomAnimation animation(number.property(), step, nullptr, refresh);
    QSignalSpy finished(&animation, &Animation::finished);
    animation.start();
    refresh.pass(0.5, 0.25);
    QCOMPARE(number.value(), 5.0);
    refresh.pass(3, 0.25);
    QCOMPARE(number.value(), 10.0);
    QCOMPARE(ends(finished), QList<bool>{true});
}

void TestAnimation::properties_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QVariant>("from");
    QTest::addColumn<QVariant>("to");
    QTest::addColumn<QVariant>("half");
    const auto row = [](const char *name, const QVariant &from, const QVariant &to, const QVariant &half) {
        QTest::newRow(name) << QByteArray(name) << from << to << half;
    };
    row("minimumHeight", 10, 21, 16);
    row("cornerRadius", 0.0, 3.0, 1.5);
    row("pos", QPoint(0, 10), QPoint(20, 20), QPoint(10, 15));
    row("size", QSize(20, 20), QSize(40, 80), QSize(30, 50));
    row("geometry", QRect(0, 0, 20, 20), QRect(10, 20, 40, 60), QRect(5, 10, 30, 40));
    row("borderColor", QColor(Qt::black), QColor(Qt::white), QColor::fromRgbF(0.5F, 0.5F, 0.5F));
}

void TestAnimation::properties()
{
    QFETCH(QByteArray, name);
    QFETCH(QVariant, from);
    QFETCH(QVariant, to);
    QFETCH(QVariant, half);
    ManualRefresh refresh;
    QWidget window;
    QBBox box(&window);
    box.setProperty(name.constData(), from);
    BasicAnimation animation(AnimatedProperty::named(&box, name.constData()), nullptr, refresh);
    animation.setTo(*AnimationValue::of(to));
    animation.setDuration(1);
    animation.setEasing(QEasingCurve::Linear);
    animation.start();
    refresh.pass(0.5, 0.5);
    QCOMPARE(box.property(name.constData()), half);
    refresh.pass(0.5, 0.5);
    QCOMPARE(box.property(name.constData()), to);
    QVERIFY(!AnimationValue::of(QStringLiteral("text")));
}

void TestAnimation::delayAndPause()
{
    ManualRefresh refresh;
    Number number;
    BasicAnimation animation(number.property(), nullptr, refresh);
    animation.setTo(100);
    animation.setDuration(1);
    animation.setEasing(QEasingCurve::Linear);
    animation.setDelay(1);
    animation.start();
    refresh.pass(0.75, 0.25);
    QVERIFY(number.seen.isEmpty());
    refresh.pass(0.75, 0.25);
    QCOMPARE(number.value(), 50.0);
    animation.pause();
    animation.pause();
    QVERIFY(!refresh.isTicking());
    refresh.pass(5);
    QCOMPARE(number.value(), 50.0);
    animation.resume();
    animation.resume();
    refresh.pass(0.25, 0.25);
    QCOMPARE(number.value(), 75.0);
}

void TestAnimation::endsOnce()
{
    ManualRefresh refresh;
    Number number;
    BasicAnimation animation(number.property(), nullptr, refresh);
    QSignalSpy finished(&animation, &Animation::finished);
    animation.setTo(1);
    animation.stop();
    QCOMPARE(ends(finished), QList<bool>());
    animation.start();
    animation.start();
    animation.pause();
    animation.stop();
    animation.stop();
    animation.resume();
    refresh.pass(5);
    QCOMPARE(ends(finished), QList<bool>({false, false}));
    animation.start();
    refresh.pass(5);
    QCOMPARE(ends(finished), QList<bool>({false, false, true}));
}

void TestAnimation::gone_data()
{
    QTest::addColumn<QString>("victim");
    QTest::addColumn<bool>("withinStep");
    for (const char *victim : {"target", "animation"})
        for (const bool within : {false, true})
            QTest::addRow("%s %s", victim, within ? "within a step" : "between steps")
                << QString::fromLatin1(victim) << within;
}

void TestAnimation::gone()
{
    QFETCH(QString, victim);
    QFETCH(bool, withinStep);
    ManualRefresh refresh;
    auto target = std::make_unique<QObject>();
    std::unique_ptr<BasicAnimation> animation;
    const auto destroy = [&] {
        if (victim == QLatin1String("target"))
            target.reset();
        else
            animation.reset();
    };
    int writes = 0;
    const auto write = [&](double) {
        if (++writes == 2 && withinStep)
            destroy();
    };
    animation = std::make_unique<BasicAnimation>(AnimatedProperty::number(target.get(), write), nullptr, refresh);
    QSignalSpy finished(animation.get(), &Animation::finished);
    animation->setDuration(1);
    animation->setTo(1);
    animation->start();
    Number other; // what else is moved goes on
    BasicAnimation neighbour(other.property(), nullptr, refresh);
    neighbour.setTo(1);
    neighbour.setDuration(1);
    neighbour.start();
    refresh.pass(0.2, 0.1);
    if (!withinStep)
        destroy();
    refresh.pass(3, 0.1);
    QCOMPARE(writes, 2);
    QCOMPARE(ends(finished), victim == QLatin1String("target") ? QList<bool>{false} : QList<bool>());
    QCOMPARE(other.value(), 1.0);
    QVERIFY(!refresh.isTicking());
}

void TestAnimation::restartedAtItsEnd()
{
    ManualRefresh refresh;
    Number number;
    BasicAnimation animation(number.property(), nullptr, refresh);
    animation.setDuration(1);
    animation.setTo(1);
    int rounds = 0;
    connect(&animation, &Animation::finished, this, [&] {
        if (++rounds < 3)
            animation.start();
    });
    animation.start();
    refresh.pass(10, 0.25);
    QCOMPARE(rounds, 3);
    QVERIFY(!animation.isRunning());
}

void TestAnimation::reducedMotion()
{
    ManualRefresh refresh;
    refresh.setReducedMotion(true);
    Number number;
    SpringAnimation spring(number.property(), nullptr, refresh);
    QSignalSpy finished(&spring, &Animation::finished);
    spring.setTo(100);
    spring.start();
    refresh.pass(0.02);
    QCOMPARE(number.seen, QList<double>{100});
    QCOMPARE(ends(finished), QList<bool>{true});
}

void TestAnimation::idleCostsNothing()
{
    ManualRefresh refresh;
    Number number;
    BasicAnimation first(number.property(), nullptr, refresh);
    SpringAnimation second(number.property(), nullptr, refresh);
    QVERIFY(!refresh.isTicking());
    first.setTo(1);
    second.setTo(1);
    first.start();
    second.start();
    QVERIFY(refresh.isTicking());
    refresh.pass(20);
    QVERIFY(!refresh.isTicking());
    QCOMPARE(refresh.starts, 1);
}

#include "TestAnimation.moc"
