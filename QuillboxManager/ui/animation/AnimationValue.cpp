#include "ui/animation/AnimationValue.h"

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <algorithm>

namespace
{
AnimationValue made(std::initializer_list<double> numbers)
{
    AnimationValue value;
    std::copy(numbers.begin(), numbers.end(), value.numbers.begin());
    value.count = static_cast<int>(numbers.size());
    return value;
}

float share(double number)
{
    return static_cast<float>(std::clamp(number, 0.0, 1.0));
}
} // namespace

std::optional<AnimationValue> AnimationValue::of(const QVariant &variant)
{
    switch (variant.typeId()) {
    case QMetaType::Int:
    case QMetaType::Double:
    case QMetaType::Float:
        return made({variant.toDouble()});
    case QMetaType::QPoint:
    case QMetaType::QPointF:
        return made({variant.toPointF().x(), variant.toPointF().y()});
    case QMetaType::QSize:
    case QMetaType::QSizeF:
        return made({variant.toSizeF().width(), variant.toSizeF().height()});
    case QMetaType::QRect:
    case QMetaType::QRectF: {
        const QRectF rect = variant.toRectF();
        return made({rect.x(), rect.y(), rect.width(), rect.height()});
    }
    case QMetaType::QColor: {
        const auto color = variant.value<QColor>();
        return made({color.redF(), color.greenF(), color.blueF(), color.alphaF()});
    }
    default:
        return {};
    }
}

QVariant AnimationValue::toVariant(int typeId) const
{
    const auto &[a, b, c, d] = numbers;
    switch (typeId) {
    case QMetaType::Int:
        return qRound(a);
    case QMetaType::Float:
        return static_cast<float>(a);
    case QMetaType::QPoint:
        return QPointF(a, b).toPoint();
    case QMetaType::QPointF:
        return QPointF(a, b);
    case QMetaType::QSize:
        return QSizeF(a, b).toSize();
    case QMetaType::QSizeF:
        return QSizeF(a, b);
    case QMetaType::QRect:
        return QRectF(a, b, c, d).toRect();
    case QMetaType::QRectF:
        return QRectF(a, b, c, d);
    case QMetaType::QColor:
        return QColor::fromRgbF(share(a), share(b), share(c), share(d));
    default:
        return a;
    }
}

AnimationValue AnimationValue::towards(const AnimationValue &other, double factor) const
{
    AnimationValue result = *this;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        result.numbers[i] += factor * (other.numbers[i] - numbers[i]);
    return result;
}

bool AnimationValue::operator==(const AnimationValue &other) const
{
    return count == other.count && std::equal(numbers.begin(), numbers.begin() + count, other.numbers.begin());
}
