#pragma once

#include <QString>

/// From here on every line of the log also goes to a file, which begins anew when it has grown large. `folder` is made
/// when it is missing; without it the lines go to standard error alone.
namespace InstallLog
{
void keepIn(const QString &folder);
}
