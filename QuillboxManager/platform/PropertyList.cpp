#include "platform/PropertyList.h"

#include "platform/AtomicFile.h"
#include "platform/BoundedFile.h"
#include "platform/PropertyListReader.h"

#include <QDateTime>

#include <memory>
#include <plist/plist.h>

namespace platform::PropertyList
{

namespace
{

/// XML 1.0 has no place for most control characters; a file that held one could not be read back.
QByteArray writableText(const QString &text)
{
    QString kept = text;
    kept.removeIf([](QChar character) {
        const ushort code = character.unicode();
        return (code < 0x20 && code != '\t' && code != '\n' && code != '\r') || code == 0xFFFE || code == 0xFFFF;
    });
    return kept.toUtf8();
}

plist_t nodeOf(const QVariant &value);

plist_t nodeOfList(const QVariantList &items)
{
    plist_t node = plist_new_array();
    for (const QVariant &item : items)
        if (plist_t child = nodeOf(item))
            plist_array_append_item(node, child);
    return node;
}

plist_t nodeOfDictionary(const QVariantMap &entries)
{
    plist_t node = plist_new_dict();
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
        if (plist_t child = nodeOf(entry.value()))
            plist_dict_set_item(node, writableText(entry.key()).constData(), child);
    return node;
}

plist_t nodeOfInteger(qint64 value)
{
#ifdef QUILLBOX_SIGNED_PROPERTY_LISTS
    return plist_new_int(value);
#else
    return plist_new_uint(static_cast<uint64_t>(value)); // written as the signed number that it is
#endif
}

plist_t nodeOfDate(const QDateTime &date)
{
    constexpr qint64 referenceDate = 978307200; // 2001-01-01 in seconds since 1970
    const qint64 milliseconds = date.toMSecsSinceEpoch();
    return plist_new_date(static_cast<int32_t>(milliseconds / 1000 - referenceDate),
                          static_cast<int32_t>(milliseconds % 1000 * 1000));
}

/// Null for a value that a property list cannot hold.
plist_t nodeOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return nodeOfInteger(value.toLongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QDateTime:
        return nodeOfDate(value.toDateTime());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size()));
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return nodeOfDictionary(value.toMap());
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return nodeOfList(value.toList());
    case QMetaType::QString:
        return plist_new_string(writableText(value.toString()).constData());
    default:
        return nullptr;
    }
}

} // namespace

std::optional<QVariant> parse(const QByteArray &bytes)
{
    if (bytes.isEmpty() || bytes.size() > maximumBytes)
        return std::nullopt;
    return bytes.startsWith("bplist") ? parseBinary(bytes) : parseXML(bytes);
}

QByteArray serialize(const QVariant &value)
{
    const std::unique_ptr<void, decltype(&plist_free)> node(nodeOf(value), plist_free);
    if (!node)
        return {};
    char *text = nullptr;
    uint32_t length = 0;
    plist_to_xml(node.get(), &text, &length);
    QByteArray bytes(text, static_cast<qsizetype>(length));
    plist_to_xml_free(text);
    return bytes;
}

std::optional<QVariant> read(const QString &path)
{
    const auto bytes = readBoundedFile(path, maximumBytes);
    return bytes ? parse(*bytes) : std::nullopt;
}

std::optional<QVariantMap> readDictionary(const QString &path)
{
    const auto value = read(path);
    if (!value || value->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value->toMap();
}

bool write(const QString &path, const QVariant &value, bool shared)
{
    const QByteArray bytes = serialize(value);
    return !bytes.isEmpty() && writeAtomically(path, bytes, shared ? FileAccess::Shared : FileAccess::OwnerOnly);
}

} // namespace platform::PropertyList
