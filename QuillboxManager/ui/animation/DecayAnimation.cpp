#include "ui/animation/DecayAnimation.h"

#include <cmath>
#include <utility>

DecayAnimation::DecayAnimation(AnimatedProperty property, QObject *parent, DisplayRefresh &refresh)
    : Animation(std::move(property), refresh, parent)
{
}

void DecayAnimation::begin(const AnimationValue &present)
{
    origin = rest = present;
    for (std::size_t i = 0; i < origin.numbers.size(); ++i)
        rest.numbers[i] += velocity.numbers[i] * timeConstant;
}

bool DecayAnimation::advance(double seconds, AnimationValue &value)
{
    const double left = std::exp(-seconds / timeConstant);
    value = rest.towards(origin, left);
    for (std::size_t i = 0; i < static_cast<std::size_t>(rest.count); ++i)
        if (std::abs(value.numbers[i] - rest.numbers[i]) >= threshold)
            return false;
    value = rest;
    return true;
}
