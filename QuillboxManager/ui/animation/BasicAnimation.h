#pragma once

#include "ui/animation/Animation.h"

#include <QEasingCurve>

/// From one value to another in a given time.
class BasicAnimation final : public Animation
{
    Q_OBJECT
public:
    explicit BasicAnimation(AnimatedProperty property, QObject *parent = nullptr,
                            DisplayRefresh &refresh = DisplayRefresh::shared());

    /// No value: from where the property stands.
    void setFrom(const AnimationValue &value) { from = value; }
    /// While running, the movement turns to the new value from where it is and takes its whole time again.
    void setTo(const AnimationValue &value);
    void setDuration(double seconds) { duration = seconds; }
    void setEasing(const QEasingCurve &curve) { easing = curve; }

protected:
    void begin(const AnimationValue &present) override;
    bool advance(double seconds, AnimationValue &value) override;
    AnimationValue restValue() const override { return to; }

private:
    AnimationValue from;
    AnimationValue to;
    AnimationValue origin;
    double duration = 0.25;
    QEasingCurve easing = QEasingCurve::InOutQuad;
    bool turned = false; ///< `to` has changed in the middle
};
