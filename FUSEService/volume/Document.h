#pragma once

#include <QString>

#include <memory>

namespace volume
{

/// What the server (or the volume itself, for its upper levels) says about one file or folder. A value.
struct Document {
    enum class Kind { Root, Category, Entry, Folder, File };

    Kind kind = Kind::File;
    QString id;
    QString name;        ///< as it stands in its folder
    QString rev;         ///< of the contents; null for folders
    qint64 size = 0;     ///< bytes; 0 for folders
    qint64 modified = 0; ///< microseconds since 1970
    int category = 0;    ///< 1 to 5, of entries and categories

    bool isFile() const { return kind == Kind::File; }
    /// Names may be added and removed below it.
    bool holdsDocuments() const { return kind == Kind::Entry || kind == Kind::Folder; }
    /// It may be renamed, moved and removed itself.
    bool isOrdinary() const { return kind == Kind::Folder || kind == Kind::File; }
};

using DocumentPointer = std::shared_ptr<const Document>;

} // namespace volume
