#pragma once

#include <QByteArray>
#include <QString>

namespace volume
{

/// What is mounted on a path according to the kernel's table. The path itself is never touched: a dead mount would hang
/// or fail whoever looks.
enum class MountOwner { Nobody, OurKind, Foreign };

/// From a table in the format of /proc/self/mountinfo; the last mount on the path is the one that counts. `user`: whose
/// volumes are of our kind.
MountOwner ownerOfMount(const QByteArray &table, const QString &path, unsigned user);

/// The place where the volume appears.
class MountPoint
{
public:
    explicit MountPoint(const QString &place) : path(place) {}

    /// Makes the folder and clears away what a crashed service left there. Text of what prevents it, null when ready.
    /// Blocks for a second at most where there is nothing to clear.
    QString prepare() const;
    /// Detaches the volume at once, whoever still uses it. False when it is still there.
    bool detach() const;

private:
    MountOwner owner() const;
    bool goesByItself() const;

    const QString path;
};

} // namespace volume
