#include "ui/animation/BasicAnimation.h"

#include <utility>

BasicAnimation::BasicAnimation(AnimatedProperty property, QObject *parent, DisplayRefresh &refresh)
    : Animation(std::move(property), refresh, parent)
{
}

void BasicAnimation::setTo(const AnimationValue &value)
{
    to = value;
    if (!isRunning())
        return;
    turned = true;
    rebase();
    turned = false;
}

void BasicAnimation::begin(const AnimationValue &present)
{
    origin = from.count > 0 && !turned ? from : present;
}

bool BasicAnimation::advance(double seconds, AnimationValue &value)
{
    const bool last = seconds >= duration;
    value = last ? to : origin.towards(to, easing.valueForProgress(seconds / duration));
    return last;
}
