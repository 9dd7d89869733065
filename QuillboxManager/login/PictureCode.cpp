#include "login/PictureCode.h"

#include "login/JsonValues.h"

#include <QBuffer>
#include <QImageReader>

namespace
{
constexpr qsizetype LongestPictureText = 2 * 1024 * 1024;
constexpr int LargestSide = 2000;

QImage decoded(QByteArray data)
{
    QBuffer buffer(&data);
    QImageReader reader(&buffer);
    static const QList<QByteArray> formats = {"png", "jpeg", "jpg", "gif", "bmp"};
    const QSize size = reader.size();
    if (!formats.contains(reader.format()) || size.isEmpty() || size.width() > LargestSide ||
        size.height() > LargestSide)
        return {};
    return reader.read();
}
} // namespace

PictureCode PictureCode::of(const QJsonObject &reply)
{
    PictureCode code;
    code.uuid = JsonValues::text(reply, QStringLiteral("uuid"));
    const QString text = JsonValues::text(reply, QStringLiteral("vcode"));
    if (text.size() <= LongestPictureText)
        code.image = decoded(QByteArray::fromBase64(text.toLatin1()));
    return code;
}
