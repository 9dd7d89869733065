#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace platform
{

/// The two lists of favourite places that file managers keep. Each function gives the content without the first entry
/// whose display name equals `name` exactly, everything else byte for byte; nothing when there is no such entry or the
/// content is not understood.

/// One address a line, with its display name after a blank; without one the last part of the address is shown.
std::optional<QByteArray> withoutBookmark(const QByteArray &lines, const QString &name);

/// XBEL: an element "bookmark" with a "title".
std::optional<QByteArray> withoutPlace(const QByteArray &document, const QString &name);

} // namespace platform
