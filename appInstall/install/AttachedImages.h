#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace install
{

struct AttachedImage {
    QString image;      ///< the file, null when the tool cannot tell it
    QString mountPoint; ///< below the volumes folder
};

/// What the disk-image tool's "info" says about images attached below `volumes`; lines of any other kind are skipped.
QList<AttachedImage> attachedImages(const QByteArray &information, const QString &volumes);

/// The disk images that are attached now, by way of the disk-image tool. Blocks; any thread.
class AttachedImages
{
public:
    AttachedImages(QString diskImageTool, QString volumesFolder);

    QList<AttachedImage> list() const;
    /// Forces every place off where this image is attached.
    void detach(const QString &image) const;
    void detachAt(const QString &mountPoint) const;

    /// Why the path is no application to install: it must be the one application at the top of the volume where `image`
    /// is attached. Null when it is.
    QString problemWithApplication(const QString &path, const QString &image) const;

private:
    const QString tool;
    const QString volumes;
};

} // namespace install
