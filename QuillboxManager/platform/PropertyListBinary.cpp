#include "platform/PropertyListReader.h"

#include <QDateTime>
#include <QStringDecoder>
#include <QVariantList>
#include <QVariantMap>

#include <cstdlib>
#include <memory>
#include <plist/plist.h>

namespace platform::PropertyList
{

namespace
{

using Value = std::optional<QVariant>;

/// Walks the object table the way it unfolds, without keeping anything.
class BinaryWalk
{
public:
    explicit BinaryWalk(const QByteArray &all) : bytes(all) {}
    bool isBounded();

private:
    static constexpr int objectBudget = 1'000'000;
    static constexpr qsizetype trailerBytes = 32;
    static constexpr qsizetype headerBytes = 8;

    std::optional<quint64> number(quint64 offset, int width) const;
    std::optional<quint64> offsetOf(quint64 object) const;
    bool visit(quint64 object, int depth);
    bool visitContainer(quint64 offset, int kind, quint64 count, int depth);

    const QByteArray &bytes;
    int offsetWidth = 0;
    int referenceWidth = 0;
    quint64 objects = 0;
    quint64 table = 0;
    int visited = 0;
};

std::optional<quint64> BinaryWalk::number(quint64 offset, int width) const
{
    const auto size = static_cast<quint64>(bytes.size());
    if (width < 1 || width > 8 || offset > size || size - offset < static_cast<quint64>(width))
        return std::nullopt;
    quint64 value = 0;
    for (int index = 0; index < width; ++index)
        value = value << 8 | static_cast<quint8>(bytes[static_cast<qsizetype>(offset) + index]);
    return value;
}

std::optional<quint64> BinaryWalk::offsetOf(quint64 object) const
{
    if (object >= objects)
        return std::nullopt;
    const auto offset = number(table + object * static_cast<quint64>(offsetWidth), offsetWidth);
    return offset && *offset >= headerBytes && *offset < table ? offset : std::nullopt;
}

bool BinaryWalk::isBounded()
{
    if (bytes.size() < headerBytes + trailerBytes)
        return false;
    const auto trailer = static_cast<quint64>(bytes.size() - trailerBytes);
    offsetWidth = static_cast<quint8>(bytes[static_cast<qsizetype>(trailer) + 6]);
    referenceWidth = static_cast<quint8>(bytes[static_cast<qsizetype>(trailer) + 7]);
    objects = *number(trailer + 8, 8);
    const quint64 top = *number(trailer + 16, 8);
    table = *number(trailer + 24, 8);
    const bool fits = offsetWidth >= 1 && offsetWidth <= 8 && table >= headerBytes && table <= trailer &&
                      objects <= (trailer - table) / static_cast<quint64>(offsetWidth);
    return fits && visit(top, 1);
}

bool BinaryWalk::visit(quint64 object, int depth)
{
    const auto offset = offsetOf(object);
    if (!offset || ++visited > objectBudget)
        return false;
    const auto marker = static_cast<quint8>(bytes[static_cast<qsizetype>(*offset)]);
    const int kind = marker >> 4;
    if (kind != 0xA && kind != 0xD)
        return true;
    if ((marker & 0x0F) != 0x0F)
        return visitContainer(*offset + 1, kind, marker & 0x0F, depth);
    const auto lengthMarker = number(*offset + 1, 1);
    if (!lengthMarker || *lengthMarker >> 4 != 1 || (*lengthMarker & 0x0F) > 3)
        return false;
    const int width = 1 << (*lengthMarker & 0x0F);
    const auto count = number(*offset + 2, width);
    return count && visitContainer(*offset + 2 + static_cast<quint64>(width), kind, *count, depth);
}

bool BinaryWalk::visitContainer(quint64 offset, int kind, quint64 count, int depth)
{
    if (depth > maximumDepth || count > objectBudget)
        return false;
    const quint64 references = kind == 0xD ? count * 2 : count;
    for (quint64 index = 0; index < references; ++index) {
        const auto child = number(offset + index * static_cast<quint64>(referenceWidth), referenceWidth);
        if (!child || !visit(*child, depth + 1))
            return false;
    }
    return true;
}

std::optional<QString> strictText(const char *bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(QByteArrayView(bytes));
    if (decoder.hasError())
        return std::nullopt;
    return text.isNull() ? QStringLiteral("") : text;
}

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
template <class T> using Allocated = std::unique_ptr<T, Free>;

Value valueOf(plist_t node);

Value arrayOf(plist_t node)
{
    QVariantList items;
    const uint32_t count = plist_array_get_size(node);
    plist_array_iter memory = nullptr;
    plist_array_new_iter(node, &memory);
    const Allocated<void> iterator(memory);
    for (uint32_t index = 0; index < count; ++index) {
        plist_t item = nullptr;
        plist_array_next_item(node, memory, &item);
        const Value value = valueOf(item);
        if (!value)
            return std::nullopt;
        items.append(*value);
    }
    return items;
}

Value dictionaryOf(plist_t node)
{
    QVariantMap entries;
    plist_dict_iter memory = nullptr;
    plist_dict_new_iter(node, &memory);
    const Allocated<void> iterator(memory);
    for (;;) {
        char *bytes = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, memory, &bytes, &item);
        const Allocated<char> key(bytes);
        if (!item)
            return entries;
        const auto text = key ? strictText(key.get()) : std::nullopt;
        const Value value = valueOf(item);
        if (!text || !value)
            return std::nullopt;
        entries.insert(*text, *value);
    }
}

Value dateOf(plist_t node)
{
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    constexpr qint64 referenceDate = 978307200; // 2001-01-01 in seconds since 1970
    return QDateTime::fromMSecsSinceEpoch((referenceDate + seconds) * 1000 + microseconds / 1000, Qt::UTC);
}

Value scalarOf(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return QVariant(static_cast<qint64>(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return QVariant(value);
    }
    case PLIST_DATA: {
        char *bytes = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &bytes, &length);
        const Allocated<char> owner(bytes);
        return QVariant(bytes ? QByteArray(bytes, static_cast<qsizetype>(length)) : QByteArray(""));
    }
    case PLIST_DATE:
        return dateOf(node);
    default:
        return std::nullopt;
    }
}

Value valueOf(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_ARRAY:
        return arrayOf(node);
    case PLIST_DICT:
        return dictionaryOf(node);
    case PLIST_STRING: {
        char *bytes = nullptr;
        plist_get_string_val(node, &bytes);
        const Allocated<char> owner(bytes);
        const auto text = bytes ? strictText(bytes) : std::nullopt;
        return text ? Value(*text) : std::nullopt;
    }
    default:
        return scalarOf(node);
    }
}

} // namespace

bool isBoundedBinary(const QByteArray &bytes)
{
    return BinaryWalk(bytes).isBounded();
}

std::optional<QVariant> parseBinary(const QByteArray &bytes)
{
    if (!isBoundedBinary(bytes))
        return std::nullopt;
    plist_t root = nullptr;
    plist_from_bin(bytes.constData(), static_cast<uint32_t>(bytes.size()), &root);
    const std::unique_ptr<void, decltype(&plist_free)> owner(root, plist_free);
    return root ? valueOf(root) : std::nullopt;
}

} // namespace platform::PropertyList
