#pragma once

#include "volume/Document.h"

#include <QList>
#include <QStringList>

namespace volume
{

/// What a shared link says, without asking anybody. A link is an address (http, https or the application's scheme) with
/// the document's id as "docid" in its query, also in one behind the fragment's "#", or as the last piece of its path;
/// the server's prefix of internal links followed by the id; or the bare id.
namespace SharedLink
{

constexpr qsizetype longestLink = 8192; ///< characters

/// The document's id, null when the text is no link. `internalLinkPrefix` may be empty.
QString documentId(const QString &text, const QString &internalLinkPrefix);

/// Where, below the volume's root, the document with that path on the server may stand: more than one place when entry
/// documents share a name. Empty when the volume cannot show it.
QStringList places(const QString &serverPath, const QList<Document> &entries);

} // namespace SharedLink
} // namespace volume
