#include "ui/animation/SpringAnimation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

SpringAnimation::SpringAnimation(AnimatedProperty property, QObject *parent, DisplayRefresh &refresh)
    : Animation(std::move(property), refresh, parent)
{
}

SpringAnimation::Motion SpringAnimation::motion(const Motion &start, double period, double dampingRatio, double seconds)
{
    const double frequency = 2 * std::numbers::pi / period;
    const double decay = dampingRatio * frequency;
    const double fading = std::exp(-decay * seconds);
    const double push = start.speed + decay * start.distance;
    if (dampingRatio < 1) {
        const double swing = frequency * std::sqrt(1 - dampingRatio * dampingRatio);
        const double sine = std::sin(swing * seconds);
        const double cosine = std::cos(swing * seconds);
        const double distance = fading * (start.distance * cosine + push / swing * sine);
        return {distance, fading * (push * cosine - start.distance * swing * sine) - decay * distance};
    }
    // An overdamped spring creeps; none of ours is meant to, so it counts as critically damped.
    const double critical = std::exp(-frequency * seconds);
    const double lead = start.speed + frequency * start.distance;
    const double distance = critical * (start.distance + lead * seconds);
    return {distance, critical * lead - frequency * distance};
}

void SpringAnimation::setTo(const AnimationValue &value)
{
    to = value;
    if (!isRunning())
        return;
    const AnimationValue launch = velocity;
    for (std::size_t i = 0; i < starts.size(); ++i)
        velocity.numbers[i] = motion(starts[i], period, dampingRatio, std::max(0.0, elapsed())).speed;
    rebase();
    velocity = launch;
}

void SpringAnimation::begin(const AnimationValue &present)
{
    for (std::size_t i = 0; i < starts.size(); ++i)
        starts[i] = {present.numbers[i] - to.numbers[i], velocity.numbers[i]};
}

bool SpringAnimation::advance(double seconds, AnimationValue &value)
{
    value = to;
    bool resting = true;
    for (std::size_t i = 0; i < static_cast<std::size_t>(to.count); ++i) {
        const Motion now = motion(starts[i], period, dampingRatio, seconds);
        value.numbers[i] += now.distance;
        resting = resting && std::abs(now.distance) < threshold && std::abs(now.speed) * period < threshold;
    }
    if (resting)
        value = to;
    return resting;
}
