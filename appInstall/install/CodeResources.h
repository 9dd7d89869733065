#pragma once

#include <QString>

namespace install
{

/// "Contents/_CodeSignature/CodeResources" in the bundle: a property list whose dictionary "files" has one entry for
/// every other file below "Contents", by its path from there: the SHA-256 of a file as data, the target of a link as
/// text.
QString codeResourcesFile(const QString &bundle);

/// Why the bundle is not what its list says: a file is missing, differs or is not listed, or there is no sound list.
/// Null when every entry agrees. Reads every file, so in the background. Any thread.
QString problemWithCodeResources(const QString &bundle);

} // namespace install
