#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace install
{

/// What the manager names when it starts the helper.
struct UpdateRequest {
    QString bundle;         ///< the installed application, which the manager ran from
    QString newApplication; ///< the application in the attached image
    QString image;          ///< the downloaded disk image

    /// Nothing new is to be installed: only an installation that was interrupted is to come to an end.
    bool isResumption() const { return newApplication.isNull(); }
};

/// Three arguments are an installation, one is the bundle where one was interrupted. They may still be anything;
/// nothing for any other number.
std::optional<UpdateRequest> updateRequest(const QStringList &arguments);

/// Why the path may not be used, null when it is absolute, short enough and without "." , "..", empty parts or a slash
/// at its end. Does not look at the disk.
QString problemWithPath(const QString &path);

/// Why this cannot be the installed product; null when it is a real folder "Name.app" of this user with the product's
/// identifier and an executable, in a folder that this user may change. Any thread; touches the disk.
QString problemWithBundle(const QString &bundle);

/// Why this is no image file; null when it is a regular file itself, not a link to one.
QString problemWithImage(const QString &image);

} // namespace install
