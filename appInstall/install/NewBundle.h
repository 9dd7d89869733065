#pragma once

#include <QString>

namespace install
{

/// Identifier of the product's bundle.
QString productIdentifier();

/// Why the folder is not a bundle of the product; null when its Info.plist carries the product's identifier and names
/// an executable that is a plain, executable file. Any thread; touches the disk.
QString problemWithProduct(const QString &bundle);

/// Why `candidate` may not take the place of `installed`: not the product, an older version or without its list of code
/// resources. Null when it may.
QString problemWithCandidate(const QString &candidate, const QString &installed);

/// Why the bundle's executable cannot run on this machine, as when a library is missing; null when it tells its
/// version. Runs it, so only for a bundle that is what its list says. Blocks.
QString problemWithExecutable(const QString &bundle);

} // namespace install
