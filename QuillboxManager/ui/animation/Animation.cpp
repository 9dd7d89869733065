#include "ui/animation/Animation.h"

#include <algorithm>
#include <utility>

Animation::Animation(AnimatedProperty property, DisplayRefresh &refresh, QObject *parent)
    : QObject(parent), moved(std::move(property)), beat(refresh)
{
}

Animation::~Animation()
{
    beat.remove(this);
}

void Animation::start()
{
    const QPointer<Animation> guard(this);
    stop();
    if (!guard || current != State::Idle)
        return; // the receiver of the end has decided otherwise
    current = State::Running;
    startedAt = beat.now() + delay;
    begin(moved.read());
    beat.add(this);
}

void Animation::stop()
{
    if (current != State::Idle)
        end(false);
}

void Animation::pause()
{
    if (current != State::Running)
        return;
    current = State::Paused;
    pausedAt = beat.now();
    beat.remove(this);
}

void Animation::resume()
{
    if (current != State::Paused)
        return;
    current = State::Running;
    startedAt += beat.now() - pausedAt;
    beat.add(this);
}

double Animation::elapsed() const
{
    return (current == State::Paused ? pausedAt : beat.now()) - startedAt;
}

void Animation::rebase()
{
    startedAt += std::max(0.0, elapsed());
    begin(moved.read());
}

void Animation::step()
{
    if (!moved.isAlive()) {
        end(false);
        return;
    }
    AnimationValue value = restValue();
    bool last = beat.reducedMotion() && value.count > 0;
    if (!last) {
        if (elapsed() < 0)
            return;
        last = advance(elapsed(), value);
    }
    const QPointer<Animation> guard(this);
    moved.write(value); // whoever is moved may stop or destroy us
    if (guard && last && current == State::Running)
        end(true);
}

void Animation::end(bool completed)
{
    current = State::Idle;
    beat.remove(this);
    Q_EMIT finished(completed);
}
