#include "volume/Records.h"

#include "files/Descriptor.h"

#include <algorithm>

namespace volume
{

std::optional<Document> documentFromRecord(const QJsonObject &record, Document::Kind kind)
{
    Document document;
    document.kind = kind;
    document.id = Descriptor::identifier(record);
    document.name = Descriptor::name(record);
    if (document.id.isEmpty())
        return std::nullopt;
    if (document.isFile()) {
        document.rev = Descriptor::rev(record);
        document.size = std::max<qint64>(Descriptor::size(record), 0);
    }
    const qint64 clientTime = Descriptor::clientTime(record);
    document.modified = clientTime > 0 ? clientTime : Descriptor::modifiedTime(record);
    return document;
}

std::optional<Document> entryFromRecord(const QJsonObject &record)
{
    std::optional<Document> entry = documentFromRecord(record, Document::Kind::Entry);
    if (!entry)
        return std::nullopt;
    entry->category = static_cast<int>(Descriptor::docType(record));
    entry->name = Descriptor::docname(record);
    return entry->category == 0 || entry->name.isEmpty() ? std::nullopt : entry;
}

} // namespace volume
