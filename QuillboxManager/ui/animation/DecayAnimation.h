#pragma once

#include "ui/animation/Animation.h"

/// Moves on with a given speed that friction takes away.
class DecayAnimation final : public Animation
{
    Q_OBJECT
public:
    explicit DecayAnimation(AnimatedProperty property, QObject *parent = nullptr,
                            DisplayRefresh &refresh = DisplayRefresh::shared());

    /// Units a second at the start; counts from the next start on.
    void setVelocity(const AnimationValue &value) { velocity = value; }
    /// Seconds in which the speed falls to 1/e of what it was; above 0.
    void setTimeConstant(double seconds) { timeConstant = seconds; }
    /// It is at rest when less than this is left to go.
    void setThreshold(double units) { threshold = units; }

    /// Where it will come to rest. Only after `start`.
    AnimationValue restValue() const override { return rest; }

protected:
    void begin(const AnimationValue &present) override;
    bool advance(double seconds, AnimationValue &value) override;

private:
    AnimationValue velocity;
    AnimationValue origin;
    AnimationValue rest;
    double timeConstant = 0.325;
    double threshold = 0.5;
};
