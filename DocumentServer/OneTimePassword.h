#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace documentserver
{

/// Reads base32 (RFC 4648): case, blanks, hyphens and padding do not matter. Nothing on any other character.
std::optional<QByteArray> fromBase32(const QString &text);

/// The counter-based code of RFC 4226 (HMAC-SHA1) as decimal text with leading zeros.
QString counterCode(const QByteArray &secret, quint64 counter, int digits = 6);

/// The number of the 30-second step that a time, in milliseconds since 1970, lies in.
qint64 timeStep(qint64 milliseconds);

/// The step that the code belongs to: the current one, or one before or after; nothing when it fits none of them.
/// Steps up to and including `lastUsed` are refused, so that no code works twice.
std::optional<qint64> matchingStep(const QByteArray &secret, const QString &code, qint64 milliseconds, qint64 lastUsed);

} // namespace documentserver
