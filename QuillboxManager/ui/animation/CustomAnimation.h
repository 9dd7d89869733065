#pragma once

#include "ui/animation/Animation.h"

#include <functional>

/// A movement of the caller's own. Without a rest value it goes on under reduced motion, too.
class CustomAnimation final : public Animation
{
    Q_OBJECT
public:
    /// Sets the value of `seconds` after the start (it holds the value of the start) and says whether to go on.
    using Step = std::function<bool(double seconds, AnimationValue &value)>;

    CustomAnimation(AnimatedProperty property, Step step, QObject *parent = nullptr,
                    DisplayRefresh &refresh = DisplayRefresh::shared());

    void setRestValue(const AnimationValue &value) { rest = value; }

protected:
    void begin(const AnimationValue &present) override { origin = present; }
    bool advance(double seconds, AnimationValue &value) override;
    AnimationValue restValue() const override { return rest; }

private:
    const Step stepFunction;
    AnimationValue origin;
    AnimationValue rest;
};
