#pragma once

#include <QByteArray>
#include <QString>

namespace documentserver
{

/// scrypt's N.
constexpr int usualPasswordCost = 16384;

/// A salted scrypt hash of a password as text: "scrypt$N$r$p$salt$hash", the last two in base64.
QString hashPassword(const QByteArray &password, int cost = usualPasswordCost);

/// Whether the password belongs to the hash. An empty or damaged hash fits no password; checking it costs as
/// much as a hash of the given cost.
bool passwordFits(const QByteArray &password, const QString &hash, int costOfNone = usualPasswordCost);

/// Whether the text has the form that hashPassword() gives.
bool isPasswordHash(const QString &text);

/// Compares in a time that depends on the lengths only.
bool equalInConstantTime(const QByteArray &one, const QByteArray &other);

/// Bytes nobody can guess.
QByteArray randomBytes(int count);

} // namespace documentserver
