#pragma once

#include "api/QBError.h"

namespace volume
{

/// The errno that tells a program best what a failed call means; 0 for no error. Any thread.
int errnoForError(const QBError &error);

} // namespace volume
