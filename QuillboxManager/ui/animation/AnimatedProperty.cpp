#include "ui/animation/AnimatedProperty.h"

#include <QByteArray>

#include <memory>
#include <utility>

AnimatedProperty AnimatedProperty::named(QObject *target, const char *name)
{
    const QByteArray property(name);
    const int typeId = target->property(name).typeId();
    if (!AnimationValue::of(target->property(name)))
        qFatal("%s is no property that can be animated", name);
    AnimatedProperty made;
    made.target = target;
    made.reader = [target, property] {
        return AnimationValue::of(target->property(property.constData())).value_or(AnimationValue());
    };
    made.writer = [target, property, typeId](const AnimationValue &value) {
        target->setProperty(property.constData(), value.toVariant(typeId));
    };
    return made;
}

AnimatedProperty AnimatedProperty::number(QObject *target, std::function<void(double)> write)
{
    const auto current = std::make_shared<double>(0);
    AnimatedProperty made;
    made.target = target;
    made.reader = [current] { return AnimationValue(*current); };
    made.writer = [current, write = std::move(write)](const AnimationValue &value) {
        *current = value.first();
        write(*current);
    };
    return made;
}

AnimationValue AnimatedProperty::read() const
{
    return isAlive() ? reader() : AnimationValue();
}

void AnimatedProperty::write(const AnimationValue &value) const
{
    if (isAlive())
        writer(value);
}
