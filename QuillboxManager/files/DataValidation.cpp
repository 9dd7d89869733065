#include "files/DataValidation.h"

#include <QCryptographicHash>
#include <QStringList>

namespace DataValidation
{

QString md5(const QByteArray &data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Md5).toHex().toUpper());
}

QByteArray dataWithBase64EncodedString(const QString &base64)
{
    const QByteArray decoded = QByteArray::fromBase64(base64.toLatin1());
    return decoded.isEmpty() ? QByteArray() : decoded;
}

QString base64EncodedStringWithWrapWidth(const QByteArray &data, int width)
{
    if (data.isEmpty())
        return {};
    const QString text = QString::fromLatin1(data.toBase64());
    const int piece = width / 4 * 4;
    if (piece <= 0 || text.size() <= width)
        return text;
    QStringList lines;
    for (qsizetype start = 0; start < text.size(); start += piece)
        lines.append(text.mid(start, piece));
    return lines.join(QStringLiteral("\r\n"));
}

QString base64EncodedString(const QByteArray &data)
{
    return base64EncodedStringWithWrapWidth(data, 0);
}

} // namespace DataValidation
