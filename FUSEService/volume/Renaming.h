#pragma once

#include "volume/VolumeTree.h"

namespace volume
{

/// One renaming or move of the volume. A file that takes the name of another gives that document its contents as a new
/// revision, so that sharing, history and links of the document live on when a program saves through a temporary file.
/// Throws Errno, with everything as before unless said otherwise.
class Renaming
{
public:
    struct End {
        Inode folder = 0;
        QString name;
    };
    Renaming(VolumeTree &tree, const End &from, const End &to);
    ~Renaming();
    Renaming(const Renaming &) = delete;
    Renaming &operator=(const Renaming &) = delete;

    /// EEXIST with `keepExisting` when the new name is taken.
    void run(bool keepExisting);

private:
    /// Files up to this size are handed over by contents, larger ones by name.
    static constexpr qint64 simpleSize = 16 * 1024 * 1024;

    void check(bool keepExisting) const;
    void checkTarget() const;
    void placeLocal();
    void handOver();
    void giveContents();
    void replaceByName();
    void moveDocument();
    void moveInSteps(const Document &document);
    void entered(const DocumentPointer &document);

    VolumeTree &tree;
    const End from;
    const End to;
    Node sourceFolder;
    Node targetFolder;
    std::optional<Node> source;
    std::optional<Node> target;
};

} // namespace volume
