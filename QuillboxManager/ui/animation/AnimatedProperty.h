#pragma once

#include "ui/animation/AnimationValue.h"

#include <QObject>
#include <QPointer>

#include <functional>

/// What an animation reads its start from and writes to. A value; main thread. Nothing is read or written once the
/// target is gone.
class AnimatedProperty
{
public:
    /// A property of that name, such as "pos", "windowOpacity" or "borderColor", whose type an AnimationValue can hold.
    static AnimatedProperty named(QObject *target, const char *name);
    /// A number that only `write` knows what to do with. It starts at 0 and is remembered between animations.
    static AnimatedProperty number(QObject *target, std::function<void(double)> write);

    bool isAlive() const { return !target.isNull(); }
    AnimationValue read() const;
    void write(const AnimationValue &value) const;

private:
    QPointer<QObject> target;
    std::function<AnimationValue()> reader;
    std::function<void(const AnimationValue &)> writer;
};
