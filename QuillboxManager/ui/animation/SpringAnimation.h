#pragma once

#include "ui/animation/Animation.h"

/// Pulled to a value by a damped spring. Ends when it has come to rest there.
class SpringAnimation final : public Animation
{
    Q_OBJECT
public:
    explicit SpringAnimation(AnimatedProperty property, QObject *parent = nullptr,
                             DisplayRefresh &refresh = DisplayRefresh::shared());

    /// While running, the spring pulls to the new value and the movement keeps its speed.
    void setTo(const AnimationValue &value);
    /// Seconds one swing of the undamped spring takes; above 0.
    void setPeriod(double seconds) { period = seconds; }
    /// Below 1 it swings beyond the value, from 1 on it does not.
    void setDampingRatio(double ratio) { dampingRatio = ratio; }
    /// At the start, in units a second.
    void setVelocity(const AnimationValue &value) { velocity = value; }
    /// At rest when it is as near as this and as slow as this for each period.
    void setThreshold(double units) { threshold = units; }

    struct Motion {
        double distance = 0; ///< from where the spring pulls to
        double speed = 0;
    };
    /// Free motion of a spring after `seconds`, from `start`.
    static Motion motion(const Motion &start, double period, double dampingRatio, double seconds);

protected:
    void begin(const AnimationValue &present) override;
    bool advance(double seconds, AnimationValue &value) override;
    AnimationValue restValue() const override { return to; }

private:
    AnimationValue to;
    AnimationValue velocity;
    std::array<Motion, AnimationValue::MostNumbers> starts{};
    double period = 0.4;
    double dampingRatio = 0.7;
    double threshold = 0.01;
};
