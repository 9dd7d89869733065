#include "state/Common.h"

#include "files/QBPathIndicator.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

QString Common::catchValue(const QString &text, const QString &regex)
{
    // Blanks of every script count, such as the wide one that stands before a full-width parenthesis.
    const QRegularExpression expression(regex, QRegularExpression::UseUnicodePropertiesOption);
    return expression.isValid() ? expression.match(text).captured(1) : QString();
}

QByteArray Common::getDataWithBoundary(const QString &boundary, const QByteArray &data, const QByteArray &metaData)
{
    const QByteArray line = "--" + boundary.toUtf8();
    return line + "\r\n\r\n" + metaData + "\r\n" + line + "\r\n\r\n" + data + "\r\n" + line + "--";
}

bool Common::isParentPathSame(const QString &first, const QString &second)
{
    return QFileInfo(QDir::cleanPath(first)).path() == QFileInfo(QDir::cleanPath(second)).path();
}

QString Common::getRootPath()
{
    return QBPathIndicator::pathForQuillboxVolume();
}

bool Common::isUndeleteNode(const QString &path)
{
    const QString root = getRootPath();
    const QString node = QDir::cleanPath(path);
    return !root.isNull() && (node == root || QFileInfo(node).path() == root);
}
