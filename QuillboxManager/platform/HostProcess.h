#pragma once

#include <QString>
#include <QStringList>

namespace platform
{

class Folders;

/// Path of the running executable with all links resolved.
QString executableFile();

/// Folder "Name.app" of an executable in "Name.app/Contents/MacOS", null for any other place.
QString bundlePathOf(const QString &executable);

/// What the host says about the user's languages, preferred first, as language tags; may be empty.
QStringList hostLanguages();

/// The folders of the running host; the other parts of the host are not made for it.
Folders &hostFolders();

} // namespace platform
