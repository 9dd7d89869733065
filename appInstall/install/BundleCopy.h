#pragma once

#include <QString>

namespace install
{

/// The text of a link, null when it cannot be read.
QString linkTarget(const QString &link);

/// Whether a link that stands `depth` folders below the bundle leads to a place in the bundle whatever other links are
/// there: it is relative, climbs first and at most `depth` times, and then only descends.
bool leadsInside(const QString &target, int depth);

/// Copies a bundle into a new folder `to`, whose parent is there: folders, files and links, with their rights but
/// writable for the owner alone and without set-user marks. Null when all is copied, else the reason; what was copied
/// by then stays. Refused: devices, pipes, links that lead out, more than 200,000 entries, 4 GiB or 64 levels. Blocks;
/// any thread.
QString copyBundle(const QString &from, const QString &to);

} // namespace install
