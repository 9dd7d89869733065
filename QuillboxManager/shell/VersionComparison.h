#pragma once

#include <QString>

namespace shell
{

/// Compares texts with their digit runs taken as whole numbers of any length: "3.10.10" is greater than "3.10.4".
/// Negative, zero or positive as `first` stands before, with or after `second`.
int compareNumerically(const QString &first, const QString &second);

/// The number a text begins with, 0 without one: "6.0.2" gives 6.
qint64 leadingInteger(const QString &text);

/// First three dotted components, missing ones taken as 0: "1.2.3.456" gives "1.2.3".
QString threeComponentVersion(const QString &version);

} // namespace shell
