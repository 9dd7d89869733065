#pragma once

#include "volume/Node.h"

#include <sys/stat.h>

namespace volume
{

/// What programs see of a node: everything belongs to the user who mounted the volume and to nobody else. `created`
/// dates what the server does not date, in microseconds since 1970.
struct stat attributesOf(const Node &node, qint64 created);

} // namespace volume
