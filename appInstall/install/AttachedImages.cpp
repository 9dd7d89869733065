#include "install/AttachedImages.h"

#include "install/UpdateRequest.h"
#include "platform/Task.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace install
{

QList<AttachedImage> attachedImages(const QByteArray &information, const QString &volumes)
{
    QList<AttachedImage> images;
    QString image;
    for (const QByteArray &line : information.split('\n')) {
        const QString text = QFile::decodeName(line);
        const QString place = text.section(u'\t', -1);
        if (text.startsWith("image-path"_L1)) {
            image = text.mid(text.indexOf(u':') + 2);
        } else if (text.contains(u'\t') && place.startsWith(volumes + u'/')) {
            images.append({image, place});
            image = QString();
        }
    }
    return images;
}

AttachedImages::AttachedImages(QString diskImageTool, QString volumesFolder)
    : tool(std::move(diskImageTool)), volumes(std::move(volumesFolder))
{
}

QList<AttachedImage> AttachedImages::list() const
{
    return attachedImages(platform::runTask(tool, {u"info"_s}).output, volumes);
}

void AttachedImages::detach(const QString &image) const
{
    for (const AttachedImage &attached : list())
        if (!attached.image.isNull() && attached.image == image)
            detachAt(attached.mountPoint);
}

void AttachedImages::detachAt(const QString &mountPoint) const
{
    platform::runTask(tool, {u"detach"_s, u"-force"_s, mountPoint});
}

QString AttachedImages::problemWithApplication(const QString &path, const QString &image) const
{
    if (const QString problem = problemWithPath(path); !problem.isNull())
        return problem;
    const QString volume = QFileInfo(path).path();
    const QList<AttachedImage> attached = list();
    const bool isAttached = std::any_of(attached.begin(), attached.end(), [&](const AttachedImage &candidate) {
        return candidate.mountPoint == volume && candidate.image == image;
    });
    if (!isAttached)
        return u"it is not in the attached image"_s;
    const QFileInfo application(path);
    if (!path.endsWith(".app"_L1) || application.isSymLink() || !application.isDir())
        return u"it is no application"_s;
    const auto all = QDir::AllEntries | QDir::Hidden | QDir::System;
    if (QDir(volume).entryList({u"*.app"_s}, all).size() != 1)
        return u"it is not the only application of the image"_s;
    return {};
}

} // namespace install
