#include "platform/Log.h"

#include <QtGlobal>

#include <QUrl>

namespace platform
{

namespace
{

/// What a reader or a terminal would take for something else than one line of text.
QString printable(const QString &text)
{
    constexpr qsizetype longestLine = 8192;
    QString line;
    line.reserve(text.size());
    for (const QChar character : QStringView(text).left(longestLine)) {
        const ushort code = character.unicode();
        if (code == '\n' || code == 0x0B || code == 0x0C || code == 0x85 || code == 0x2028 || code == 0x2029)
            line += QLatin1String("\\n");
        else if (code == '\r')
            line += QLatin1String("\\r");
        else if (character.category() == QChar::Other_Control && code != '\t')
            line += QLatin1String("\\x") + QString::number(code, 16).rightJustified(2, u'0');
        else
            line += character;
    }
    if (text.size() > longestLine)
        line += QChar(0x2026);
    return line;
}

bool namesSecret(const QString &text)
{
    for (const char *word : {"token", "ticket", "sign", "password", "pwd", "secret"})
        if (text.contains(QLatin1String(word), Qt::CaseInsensitive))
            return true;
    return false;
}

/// Text without percent encoding, also when an address was carried inside an address inside an address.
QString decoded(const QString &text)
{
    QString result = text;
    for (int layer = 0; layer < 4 && result.contains(u'%'); ++layer)
        result = QUrl::fromPercentEncoding(result.toUtf8());
    return result;
}

/// One "name=value" between separators.
QString redactedItem(const QString &item)
{
    const qsizetype equals = item.indexOf(u'=');
    if (equals < 0)
        return item;
    const QString name = decoded(item.left(equals));
    const QString value = decoded(item.mid(equals + 1));
    return namesSecret(name) || (value.contains(u'=') && namesSecret(value))
               ? item.left(equals + 1) + QLatin1String("***")
               : item;
}

/// "user:password@" in front of the host goes as a whole.
QString withoutUserInfo(const QString &url)
{
    const qsizetype host = url.indexOf(QLatin1String("://"));
    if (host < 0)
        return url;
    qsizetype end = host + 3;
    while (end < url.size() && url[end] != u'/' && url[end] != u'?' && url[end] != u'#')
        ++end;
    const qsizetype at = url.lastIndexOf(u'@', end - 1);
    return at < host + 3 ? url : url.left(host + 3) + QLatin1String("***") + url.mid(at);
}

} // namespace

void log(const QString &text)
{
    qInfo("%s", printable(text).toUtf8().constData());
}

QString redactedURL(const QString &url)
{
    const QString shown = withoutUserInfo(url);
    QString result;
    QString item;
    for (const QChar character : shown) {
        if (character == u'?' || character == u'&' || character == u'#' || character == u';') {
            result += redactedItem(item) + character;
            item.clear();
        } else {
            item += character;
        }
    }
    return result + redactedItem(item);
}

} // namespace platform
