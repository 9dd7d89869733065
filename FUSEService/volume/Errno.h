#pragma once

namespace volume
{

/// How a file operation fails: thrown where it is known, answered to the program that asked.
struct Errno {
    int code = 0;
};

} // namespace volume
