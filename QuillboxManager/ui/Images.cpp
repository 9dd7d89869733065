#include "ui/Images.h"

#include "platform/Bundle.h"
#include "ui/SvgIconEngine.h"

#include <QFileInfo>
#include <QHash>
#include <QLoggingCategory>

#include <memory>

namespace Images
{

namespace
{
Q_LOGGING_CATEGORY(imagesLog, "quillbox.images")

struct Picture {
    QIcon icon;
    QSize size;
};

QString baseName(const QString &name)
{
    for (const auto &suffix : {QLatin1String(".png"), QLatin1String(".svg")})
        if (name.endsWith(suffix))
            return name.chopped(suffix.size());
    return name;
}

Picture load(const QString &path)
{
    const QString drawingPath = path + QLatin1String(".svg");
    auto drawing = QFileInfo::exists(drawingPath) ? std::make_unique<SvgIconEngine>(drawingPath) : nullptr;
    if (drawing && drawing->isValid()) {
        const QSize size = drawing->ownSize();
        return {QIcon(drawing.release()), size};
    }
    const QPixmap bitmap(path + QLatin1String(".png"));
    if (bitmap.isNull())
        qCWarning(imagesLog, "no picture %ls", qUtf16Printable(QFileInfo(path).fileName()));
    return bitmap.isNull() ? Picture{} : Picture{QIcon(bitmap), bitmap.size()};
}

const Picture &picture(const QString &name, const QString &folder)
{
    static QHash<QString, Picture> cache;
    const QString place = folder.isNull() ? platform::Bundle::main().resourcePath() : folder;
    const QString path = place + QLatin1Char('/') + baseName(name);
    auto found = cache.find(path);
    if (found == cache.end())
        found = cache.insert(path, load(path));
    return *found;
}
} // namespace

QIcon imageNamed(const QString &name, const QString &folder)
{
    return picture(name, folder).icon;
}

QPixmap pixmapNamed(const QString &name, const QSize &size, qreal devicePixelRatio, const QString &folder)
{
    return imageNamed(name, folder).pixmap(size, devicePixelRatio);
}

QSize sizeOf(const QString &name, const QString &folder)
{
    return picture(name, folder).size;
}

} // namespace Images
