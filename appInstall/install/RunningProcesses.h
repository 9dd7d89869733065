#pragma once

#include <QList>
#include <QString>

namespace install
{

/// Ids of this user's processes whose executable lies in the bundle, the manager and its companions alike, those of the
/// executable of this process left out. A replaced bundle's processes belong to the place where that bundle is now. Any
/// thread.
QList<qint64> processesOfBundle(const QString &bundle);

} // namespace install
