#pragma once

#include <QByteArray>
#include <QVariant>

#include <optional>

namespace platform::PropertyList
{

inline constexpr qsizetype maximumBytes = 16 * 1024 * 1024;
inline constexpr int maximumDepth = 64;

/// Readers of the two encodings behind `parse`; the size was checked before.
std::optional<QVariant> parseXML(const QByteArray &bytes);
std::optional<QVariant> parseBinary(const QByteArray &bytes);

/// Whether a binary property list can be unfolded safely: its references stay inside, nest at most `maximumDepth`
/// levels and name at most a million objects. A few hundred bytes whose containers share their children would otherwise
/// unfold without end.
bool isBoundedBinary(const QByteArray &bytes);

} // namespace platform::PropertyList
