#include "ui/animation/CustomAnimation.h"

#include <utility>

CustomAnimation::CustomAnimation(AnimatedProperty property, Step step, QObject *parent, DisplayRefresh &refresh)
    : Animation(std::move(property), refresh, parent), stepFunction(std::move(step))
{
}

bool CustomAnimation::advance(double seconds, AnimationValue &value)
{
    value = origin;
    return !stepFunction(seconds, value);
}
