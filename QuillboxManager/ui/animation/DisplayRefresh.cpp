#include "ui/animation/DisplayRefresh.h"

#include "platform/ReducedMotion.h"
#include "ui/animation/Animation.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimerEvent>

#include <algorithm>
#include <chrono>

namespace
{
constexpr double UsualRate = 60;    ///< hertz, where the screen does not tell
constexpr double HighestRate = 240; ///< hertz

int interval()
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double told = screen ? screen->refreshRate() : 0;
    const double rate = told >= 1 ? std::min(told, HighestRate) : UsualRate;
    return qRound(1000 / rate);
}
} // namespace

DisplayRefresh::DisplayRefresh(QObject *parent) : QObject(parent) {}

DisplayRefresh &DisplayRefresh::shared()
{
    // Never destroyed: windows that live as long as the process may still animate when it ends.
    static auto *const refresh = new DisplayRefresh;
    return *refresh;
}

double DisplayRefresh::now() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool DisplayRefresh::reducedMotion() const
{
    return ownSetting ? *ownSetting : platform::reducedMotionWanted();
}

void DisplayRefresh::add(Animation *animation)
{
    if (!animations.contains(animation))
        animations.append(animation);
    if (!ticking)
        setTicking(true);
}

void DisplayRefresh::remove(Animation *animation)
{
    animations.removeAll(animation);
    stopWhenIdle();
}

void DisplayRefresh::setTicking(bool ticks)
{
    ticking = ticks;
    if (ticks)
        timer.start(interval(), Qt::PreciseTimer, this);
    else
        timer.stop();
}

void DisplayRefresh::stopWhenIdle()
{
    if (ticking && animations.isEmpty())
        setTicking(false);
}

void DisplayRefresh::tick()
{
    const QList<QPointer<Animation>> due = animations; // a step may start, stop and destroy any of them
    for (const QPointer<Animation> &animation : due)
        if (animation && animations.contains(animation))
            animation->step();
    animations.removeAll(nullptr);
    stopWhenIdle();
}

void DisplayRefresh::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == timer.timerId())
        tick();
}
