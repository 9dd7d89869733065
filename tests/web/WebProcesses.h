#pragma once

#include <QSet>

/// The processes of the browser engine below this one.
namespace WebProcesses
{

/// Ids of all of them; what only waits to be collected does not count.
QSet<qint64> all();

} // namespace WebProcesses
