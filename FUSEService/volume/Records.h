#pragma once

#include "volume/Document.h"

#include <QJsonObject>

#include <optional>

namespace volume
{

/// A record of a listing, or the record that a change was answered with; nothing when it names no document.
std::optional<Document> documentFromRecord(const QJsonObject &record, Document::Kind kind);
/// An entry document; nothing when it is of no kind that the volume shows.
std::optional<Document> entryFromRecord(const QJsonObject &record);

} // namespace volume
