#pragma once

#include <QVariant>

#include <array>
#include <optional>

/// What an animation moves: one to four numbers, such as a height, a place, a rectangle or a colour. A value.
struct AnimationValue {
    static constexpr int MostNumbers = 4;

    AnimationValue() = default;
    AnimationValue(double number) : numbers{number}, count(1) {} // a plain number is the usual case
    /// Numbers, points, sizes, rectangles and colours (red, green, blue, alpha 0…1); nothing for any other type.
    static std::optional<AnimationValue> of(const QVariant &variant);
    /// The value as that type; `typeId` is one that `of` accepts. Whole-number types are rounded.
    QVariant toVariant(int typeId) const;

    double first() const { return numbers[0]; }
    /// `this + factor × (other − this)`, number by number.
    AnimationValue towards(const AnimationValue &other, double factor) const;
    bool operator==(const AnimationValue &other) const;

    std::array<double, MostNumbers> numbers{};
    int count = 0; ///< 0: no value
};
