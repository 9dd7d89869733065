#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace platform
{

/// The two lists of favourite places that file managers keep. `without…` gives the content without the first entry
/// whose display name equals `name` exactly, `with…` the content with such an entry for `address` at its end; everything
/// else byte for byte. Nothing when there is nothing to change or the content is not understood.

/// One address a line, with its display name after a blank; without one the last part of the address is shown.
std::optional<QByteArray> withoutBookmark(const QByteArray &lines, const QString &name);
std::optional<QByteArray> withBookmark(const QByteArray &lines, const QString &name, const QByteArray &address);

/// XBEL: an element "bookmark" with a "title".
std::optional<QByteArray> withoutPlace(const QByteArray &document, const QString &name);
std::optional<QByteArray> withPlace(const QByteArray &document, const QString &name, const QByteArray &address);

} // namespace platform
