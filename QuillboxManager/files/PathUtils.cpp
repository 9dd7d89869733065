#include "files/PathUtils.h"

#include "files/DataValidation.h"
#include "files/QBPathIndicator.h"

#include <QDir>
#include <QFileInfo>
#include <QStringDecoder>

namespace PathUtils
{

namespace
{

/// "/" counts as the first component of an absolute path; a slash at the end counts for nothing.
qsizetype componentCount(const QString &path)
{
    return path.split(u'/', Qt::SkipEmptyParts).size() + (path.startsWith(u'/') ? 1 : 0);
}

/// A host may keep its volumes deeper than "/Volumes", where the number of components alone does not tell.
bool isVolumeOrAbove(const QString &path)
{
    const QString root = QBPathIndicator::pathForQuillboxVolume();
    const QString clean = QDir::cleanPath(path);
    return !root.isNull() && (root == clean || root.startsWith(clean + u'/'));
}

} // namespace

bool exist(const QString &path)
{
    return !path.isEmpty() && QFileInfo::exists(path);
}

bool existFile(const QString &path)
{
    return exist(path) && !QFileInfo(path).isDir();
}

bool existDirectory(const QString &path)
{
    return exist(path) && QFileInfo(path).isDir();
}

bool hidden(const QString &path)
{
    return exist(path) && QFileInfo(path).isHidden();
}

quint64 size(const QString &path)
{
    return exist(path) ? static_cast<quint64>(QFileInfo(path).size()) : ~quint64(0);
}

bool constant(const QString &path)
{
    return componentCount(path) < 4 || isVolumeOrAbove(path);
}

QString appending(const QString &path, const QString &component)
{
    if (path.isNull())
        return {};
    return path.endsWith(u'/') ? path + component : path + u'/' + component;
}

QString md5(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const qsizetype end = bytes.indexOf('\0');
    return DataValidation::md5(end < 0 ? bytes : bytes.left(end));
}

QString stringWithBase64EncodedString(const QString &base64)
{
    const QByteArray bytes = base64DecodedData(base64);
    if (bytes.isEmpty())
        return {};
    QStringDecoder decode(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decode(bytes);
    return decode.hasError() ? QString() : text;
}

QString base64DecodedString(const QString &base64)
{
    return stringWithBase64EncodedString(base64);
}

QByteArray base64DecodedData(const QString &base64)
{
    return DataValidation::dataWithBase64EncodedString(base64);
}

QString base64EncodedString(const QString &text)
{
    return base64EncodedStringWithWrapWidth(text, 0);
}

QString base64EncodedStringWithWrapWidth(const QString &text, int width)
{
    return DataValidation::base64EncodedStringWithWrapWidth(text.toUtf8(), width);
}

} // namespace PathUtils
