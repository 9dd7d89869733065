#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

/// Pictures in a folder; a null `folder` means the main bundle's resources. Main thread; cached for the life of the
/// process.
namespace Images
{

/// The picture of that name, with or without ".png" or ".svg": the drawing (.svg) first, else the bitmap. Sharp at
/// every size and scale when it is a drawing. Null when there is none, which is logged once.
QIcon imageNamed(const QString &name, const QString &folder = {});

/// The picture at `size` logical pixels for a screen of that scale.
QPixmap pixmapNamed(const QString &name, const QSize &size, qreal devicePixelRatio = 1, const QString &folder = {});

/// Own size of the picture in points, empty when there is none.
QSize sizeOf(const QString &name, const QString &folder = {});

} // namespace Images
