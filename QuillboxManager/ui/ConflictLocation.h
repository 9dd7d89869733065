#pragma once

#include <QString>

/// Where a file of the volume stands, as shown to the user: "Quillbox://" and the folders from the volume's name down
/// to the file's own folder. `volumesFolder` is where the host mounts volumes. Any thread.
QString conflictLocation(const QString &path, const QString &volumesFolder);
