#pragma once

#include <QColor>
#include <QString>

/// Branded colours out of hexadecimal text. Any thread.
namespace QBColor
{

/// 0xRRGGBB, opaque.
QColor qbColorWithHex(int hex);
QColor qbCcolorWithHex(int hex, float alpha);
/// "0xRRGGBB", "#RRGGBB" or "RRGGBB" in either case with blanks around; anything else is the fully transparent colour.
QColor qbColorWithHexString(const QString &text);

} // namespace QBColor
