#include "platform/linux/PlacesFiles.h"

#include <QUrl>
#include <QXmlStreamReader>

#include <cstring>

namespace platform
{

namespace
{

QString displayNameOfBookmark(const QByteArray &line)
{
    const qsizetype blank = line.indexOf(' ');
    if (blank >= 0)
        return QString::fromUtf8(line.mid(blank + 1));
    QByteArray address = line;
    while (address.endsWith('/'))
        address.chop(1);
    return QUrl::fromPercentEncoding(address.mid(address.lastIndexOf('/') + 1));
}

/// A piece of markup from `begin` up to `end`.
struct Span {
    qsizetype begin = -1;
    qsizetype end = -1;
};

/// End of the markup that starts at `begin` with '<', -1 when it has none. Values of attributes may hold '>'.
qsizetype endOfMarkup(const QByteArray &document, qsizetype begin)
{
    const QByteArrayView rest = QByteArrayView(document).sliced(begin);
    for (const auto &[open, close] : {std::pair("<!--", "-->"), std::pair("<![CDATA[", "]]>"), std::pair("<?", "?>")}) {
        if (!rest.startsWith(open))
            continue;
        const qsizetype found = document.indexOf(close, begin + qsizetype(strlen(open)));
        return found < 0 ? -1 : found + qsizetype(strlen(close));
    }
    char quote = '\0';
    for (qsizetype index = begin; index < document.size(); ++index) {
        const char character = document[index];
        if (quote != '\0')
            quote = character == quote ? '\0' : quote;
        else if (character == '"' || character == '\'')
            quote = character;
        else if (character == '>')
            return index + 1;
    }
    return -1;
}

bool isTag(QByteArrayView markup, const char *start)
{
    if (!markup.startsWith(start))
        return false;
    const char next = markup.size() > qsizetype(strlen(start)) ? markup[qsizetype(strlen(start))] : '\0';
    return next == '>' || next == '/' || next == ' ' || next == '\t' || next == '\n' || next == '\r';
}

/// The next element "bookmark" at or after `from`; these do not nest.
Span nextBookmark(const QByteArray &document, qsizetype from)
{
    Span element;
    for (qsizetype begin = document.indexOf('<', from); begin >= 0; begin = document.indexOf('<', begin)) {
        const qsizetype end = endOfMarkup(document, begin);
        if (end < 0)
            return {};
        const QByteArrayView markup = QByteArrayView(document).sliced(begin, end - begin);
        if (element.begin < 0 && isTag(markup, "<bookmark")) {
            element.begin = begin;
            if (markup.endsWith("/>"))
                return {begin, end};
        } else if (element.begin >= 0 && isTag(markup, "</bookmark")) {
            return {element.begin, end};
        }
        begin = end;
    }
    return {};
}

QString titleOf(const QByteArray &bookmark)
{
    QXmlStreamReader xml(bookmark);
    xml.setNamespaceProcessing(false); // the prefixes are declared further out
    if (!xml.readNextStartElement())
        return {};
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("title"))
            return xml.readElementText(QXmlStreamReader::SkipChildElements);
        xml.skipCurrentElement();
    }
    return {};
}

bool isDocument(const QByteArray &document)
{
    QXmlStreamReader xml(document);
    while (!xml.atEnd())
        xml.readNext();
    return !xml.hasError();
}

/// With the indentation in front of it and the line break before that, so that no blank line stays behind.
Span withLine(const QByteArray &document, Span element)
{
    qsizetype begin = element.begin;
    while (begin > 0 && (document[begin - 1] == ' ' || document[begin - 1] == '\t'))
        --begin;
    if (begin > 0 && document[begin - 1] == '\n')
        return {begin - 1, element.end};
    return element;
}

} // namespace

std::optional<QByteArray> withoutBookmark(const QByteArray &lines, const QString &name)
{
    for (qsizetype begin = 0; begin < lines.size();) {
        const qsizetype lineBreak = lines.indexOf('\n', begin);
        const qsizetype end = lineBreak < 0 ? lines.size() : lineBreak;
        const qsizetype next = lineBreak < 0 ? lines.size() : lineBreak + 1;
        if (end > begin && displayNameOfBookmark(lines.mid(begin, end - begin)) == name)
            return lines.left(begin) + lines.mid(next);
        begin = next;
    }
    return std::nullopt;
}

std::optional<QByteArray> withBookmark(const QByteArray &lines, const QString &name, const QByteArray &address)
{
    if (withoutBookmark(lines, name))
        return std::nullopt;
    const QByteArray lastBreak = lines.isEmpty() || lines.endsWith('\n') ? QByteArray() : QByteArrayLiteral("\n");
    return lines + lastBreak + address + ' ' + name.toUtf8() + '\n';
}

std::optional<QByteArray> withoutPlace(const QByteArray &document, const QString &name)
{
    if (!isDocument(document))
        return std::nullopt;
    for (Span element = nextBookmark(document, 0); element.begin >= 0; element = nextBookmark(document, element.end)) {
        if (titleOf(document.mid(element.begin, element.end - element.begin)) != name)
            continue;
        const Span removed = withLine(document, element);
        const QByteArray rest = document.left(removed.begin) + document.mid(removed.end);
        return isDocument(rest) ? std::optional(rest) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QByteArray> withPlace(const QByteArray &document, const QString &name, const QByteArray &address)
{
    const qsizetype end = document.lastIndexOf("</xbel>");
    if (end < 0 || !isDocument(document) || withoutPlace(document, name))
        return std::nullopt;
    const QString entry = QStringLiteral(" <bookmark href=\"%1\">\n  <title>%2</title>\n </bookmark>\n")
                              .arg(QString::fromUtf8(address).toHtmlEscaped(), name.toHtmlEscaped());
    const QByteArray result = document.left(end) + entry.toUtf8() + document.mid(end);
    return isDocument(result) ? std::optional(result) : std::nullopt;
}

} // namespace platform
