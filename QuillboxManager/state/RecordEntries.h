#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

/// Typed access to the entries of a stored record. The file may have been written by anyone, and a variant converts
/// junk without complaint, so only the exact type counts.
namespace RecordEntries
{

/// Null when missing or no text.
QString text(const QVariantMap &dictionary, const QString &key);
/// Nothing when missing or neither a boolean nor the number 0 or 1, which other writers use for one.
std::optional<bool> flag(const QVariantMap &dictionary, const QString &key);
/// A null text leaves no entry.
void insert(QVariantMap &dictionary, const QString &key, const QString &text);

} // namespace RecordEntries
