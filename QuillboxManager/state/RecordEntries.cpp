#include "state/RecordEntries.h"

namespace RecordEntries
{

QString text(const QVariantMap &dictionary, const QString &key)
{
    const QVariant value = dictionary.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

std::optional<bool> flag(const QVariantMap &dictionary, const QString &key)
{
    const QVariant value = dictionary.value(key);
    const bool isNumber = value.typeId() == QMetaType::LongLong && (value.toLongLong() & ~qint64(1)) == 0;
    return value.typeId() == QMetaType::Bool || isNumber ? std::optional(value.toBool()) : std::nullopt;
}

void insert(QVariantMap &dictionary, const QString &key, const QString &text)
{
    if (!text.isNull())
        dictionary.insert(key, text);
}

} // namespace RecordEntries
