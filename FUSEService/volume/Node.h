#pragma once

#include "volume/Document.h"

#include <memory>
#include <optional>

namespace volume
{

class OpenFile;

using Inode = quint64;

/// What the kernel knows by an inode number. A copy tells how things stood.
struct Node {
    Inode inode = 0;
    Inode parent = 0;
    QString name;
    DocumentPointer document;       ///< null: not on the server, neither yet nor any more
    std::shared_ptr<OpenFile> file; ///< while it is open or has unsaved contents
    std::optional<qint64> modified; ///< set by a program for the document's present revision
};

} // namespace volume
