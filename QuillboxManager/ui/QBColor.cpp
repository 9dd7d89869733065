#include "ui/QBColor.h"

namespace QBColor
{

namespace
{
const QColor clearColor(0, 0, 0, 0);

int hexadecimalDigit(QChar character)
{
    const char16_t code = character.unicode();
    if (code >= u'0' && code <= u'9')
        return code - u'0';
    if (code >= u'A' && code <= u'F')
        return code - u'A' + 10;
    return -1;
}

/// Reads as far as the digits go, after blanks: "5G" and " 5" are 5, "G5" is 0.
int scanPair(QStringView pair)
{
    int value = 0;
    for (const QChar character : pair.trimmed()) {
        const int digit = hexadecimalDigit(character);
        if (digit < 0)
            break;
        value = value * 16 + digit;
    }
    return value;
}
} // namespace

QColor qbColorWithHex(int hex)
{
    return qbCcolorWithHex(hex, 1.0F);
}

QColor qbCcolorWithHex(int hex, float alpha)
{
    const auto component = [hex](int shift) { return static_cast<float>((hex >> shift) & 0xFF) / 255.0F; };
    return QColor::fromRgbF(component(16), component(8), component(0), alpha);
}

QColor qbColorWithHexString(const QString &text)
{
    const QString upper = text.trimmed().toUpper();
    if (upper.size() < 6)
        return clearColor;
    QStringView digits(upper);
    if (digits.startsWith(u"0X"))
        digits = digits.mid(2);
    if (digits.startsWith(u'#'))
        digits = digits.mid(1);
    if (digits.size() != 6)
        return clearColor;
    return QColor(scanPair(digits.mid(0, 2)), scanPair(digits.mid(2, 2)), scanPair(digits.mid(4, 2)));
}

} // namespace QBColor
