#pragma once

#include <QByteArray>
#include <QStringList>

namespace platform
{

/// Mount points of a kernel mount table (the format of /proc/self/mountinfo) in its order, each once.
QStringList mountPoints(const QByteArray &table);

} // namespace platform
