#include "panel/PanelItems.h"

#include "platform/AtomicFile.h"
#include "platform/BoundedFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace PanelItems
{

namespace
{
constexpr qsizetype MaximumItems = 2000; // of the longest names and folders, they stay below the bytes of a file
constexpr qsizetype MaximumText = 1024;
} // namespace

bool write(const QString &path, const QList<PanelItem> &items)
{
    QJsonArray lines;
    for (const PanelItem &item : items.first(qMin(items.size(), MaximumItems)))
        lines.append(QJsonObject{
            {u"name"_s, item.name.left(MaximumText)}, {u"folder"_s, item.folder}, {u"state"_s, item.state}});
    return platform::writeAtomically(path, QJsonDocument(lines).toJson(QJsonDocument::Compact));
}

std::optional<QList<PanelItem>> read(const QString &path)
{
    const std::optional<QByteArray> bytes = platform::readBoundedFile(path, maximumBytes);
    const QJsonDocument document = bytes ? QJsonDocument::fromJson(*bytes) : QJsonDocument();
    if (!document.isArray())
        return std::nullopt;
    QList<PanelItem> items;
    const QJsonArray lines = document.array();
    for (const QJsonValue line : lines)
        items.append({line.toObject().value(u"name").toString(), line.toObject().value(u"folder").toString(),
                      line.toObject().value(u"state").toString()});
    return items;
}

QString waiting()
{
    return u"waiting"_s;
}

} // namespace PanelItems
