#include "platform/PropertyListReader.h"

#include <QDateTime>
#include <QVariantList>
#include <QVariantMap>
#include <QXmlStreamReader>

namespace platform::PropertyList
{

namespace
{

using Value = std::optional<QVariant>;

/// One pass over the text; every function is called on a start element and returns behind its end element.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes) : xml(bytes) {}

    Value root();

private:
    Value value(int depth);
    Value array(int depth);
    Value dictionary(int depth);
    Value scalar(const QString &tag);
    std::optional<QString> text();

    QXmlStreamReader xml;
};

Value Reader::root()
{
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("plist"))
        return std::nullopt;
    // The format has no entities of its own; a document that declares some is up to no good.
    if (!xml.entityDeclarations().isEmpty() || !xml.readNextStartElement())
        return std::nullopt;
    Value result = value(1);
    if (!result || xml.readNextStartElement())
        return std::nullopt;
    while (!xml.atEnd())
        xml.readNext();
    return xml.hasError() ? std::nullopt : result;
}

Value Reader::value(int depth)
{
    const QString tag = xml.name().toString();
    if (tag != QLatin1String("array") && tag != QLatin1String("dict"))
        return scalar(tag);
    if (depth > maximumDepth)
        return std::nullopt;
    return tag == QLatin1String("array") ? array(depth) : dictionary(depth);
}

Value Reader::array(int depth)
{
    QVariantList items;
    while (xml.readNextStartElement()) {
        const Value item = value(depth + 1);
        if (!item)
            return std::nullopt;
        items.append(*item);
    }
    return xml.hasError() ? std::nullopt : Value(items);
}

Value Reader::dictionary(int depth)
{
    QVariantMap entries;
    while (xml.readNextStartElement()) {
        const auto key = xml.name() == QLatin1String("key") ? text() : std::nullopt;
        if (!key || !xml.readNextStartElement())
            return std::nullopt;
        const Value entry = value(depth + 1);
        if (!entry)
            return std::nullopt;
        entries.insert(*key, *entry);
    }
    return xml.hasError() ? std::nullopt : Value(entries);
}

std::optional<QString> Reader::text()
{
    QString content = xml.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
    if (xml.hasError())
        return std::nullopt;
    return content.isNull() ? QStringLiteral("") : content;
}

Value dataFrom(const QString &content)
{
    QByteArray encoded = content.toLatin1();
    encoded.replace('\n', "").replace('\r', "").replace('\t', "").replace(' ', "");
    const auto decoded = QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return QVariant(decoded.decoded.isNull() ? QByteArray("") : decoded.decoded);
}

Value Reader::scalar(const QString &tag)
{
    const auto content = text();
    if (!content)
        return std::nullopt;
    bool valid = true;
    QVariant result;
    if (tag == QLatin1String("string"))
        return QVariant(*content);
    if (tag == QLatin1String("data"))
        return dataFrom(*content);
    if (tag == QLatin1String("integer")) {
        result = content->trimmed().toLongLong(&valid);
    } else if (tag == QLatin1String("real")) {
        result = content->trimmed().toDouble(&valid);
    } else if (tag == QLatin1String("date")) {
        const QDateTime date = QDateTime::fromString(content->trimmed(), Qt::ISODate);
        valid = date.isValid();
        result = date.toUTC();
    } else {
        valid = (tag == QLatin1String("true") || tag == QLatin1String("false")) && content->isEmpty();
        result = tag == QLatin1String("true");
    }
    return valid ? Value(result) : std::nullopt;
}

} // namespace

std::optional<QVariant> parseXML(const QByteArray &bytes)
{
    return Reader(bytes).root();
}

} // namespace platform::PropertyList
