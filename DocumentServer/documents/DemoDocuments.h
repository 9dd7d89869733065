#pragma once

#include "DocumentServer/Services.h"

namespace documentserver
{

/// Copies the files and folders inside a folder of this machine into the demo account's own entry document, all of them
/// or none, once for a data folder. Symbolic links and names that are not acceptable are left out, with a line on
/// standard error. False with a text in *error when it fails.
bool importDemoDocuments(Services &services, const QString &folder, QString *error);

} // namespace documentserver
