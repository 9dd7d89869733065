#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace platform
{

/// Property lists, XML out, XML and binary in. Values are QString, bool, qint64, double, QDateTime, QByteArray,
/// QVariantList and QVariantMap. Any thread.
namespace PropertyList
{

/// Nothing for bytes that are no property list, are larger than 16 MiB or nest deeper than 64 levels.
std::optional<QVariant> parse(const QByteArray &bytes);
QByteArray serialize(const QVariant &value);

std::optional<QVariant> read(const QString &path);
/// Nothing also when the root is not a dictionary.
std::optional<QVariantMap> readDictionary(const QString &path);

/// Atomic: the old file or the whole new one. The file ends up readable by its owner alone unless `shared`.
bool write(const QString &path, const QVariant &value, bool shared = false);

} // namespace PropertyList
} // namespace platform
