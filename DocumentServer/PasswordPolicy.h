#pragma once

#include <QByteArray>

namespace documentserver
{

/// Whether a password may be chosen. Weak policy: 6 to 100 printable ASCII characters. Strong policy: 8 to 100 of
/// them, with an upper-case letter, a lower-case letter, a digit and one other character.
bool isAcceptablePassword(const QByteArray &password, bool strong);

} // namespace documentserver
