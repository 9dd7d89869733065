#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

/// Pictures among the main bundle's resources. Main thread; cached for the life of the process.
namespace Images
{

/// The picture of that name, with or without ".png" or ".svg": the drawing (.svg) first, else the bitmap. Sharp at
/// every size and scale when it is a drawing. Null when there is none, which is logged once.
QIcon imageNamed(const QString &name);

/// The picture at `size` logical pixels for a screen of that scale.
QPixmap pixmapNamed(const QString &name, const QSize &size, qreal devicePixelRatio = 1);

/// Own size of the picture in points, empty when there is none.
QSize sizeOf(const QString &name);

} // namespace Images
