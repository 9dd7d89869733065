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

bool write(const QString &path, const PanelList &list)
{
    QJsonArray lines;
    for (const PanelItem &item : list.items.first(qMin(list.items.size(), MaximumItems)))
        lines.append(QJsonObject{
            {u"name"_s, item.name.left(MaximumText)}, {u"folder"_s, item.folder}, {u"state"_s, item.state}});
    const bool complete = list.isComplete && list.items.size() <= MaximumItems;
    const QJsonObject file{{u"items"_s, lines}, {u"complete"_s, complete}};
    return platform::writeAtomically(path, QJsonDocument(file).toJson(QJsonDocument::Compact));
}

std::optional<PanelList> read(const QString &path)
{
    const std::optional<QByteArray> bytes = platform::readBoundedFile(path, maximumBytes);
    const QJsonDocument document = bytes ? QJsonDocument::fromJson(*bytes) : QJsonDocument();
    const QJsonObject file = document.object();
    if (!file.value(u"items").isArray())
        return std::nullopt;
    PanelList list{.items = {}, .isComplete = file.value(u"complete").toBool()};
    const QJsonArray lines = file.value(u"items").toArray();
    for (const QJsonValue line : lines)
        list.items.append({line.toObject().value(u"name").toString(), line.toObject().value(u"folder").toString(),
                           line.toObject().value(u"state").toString()});
    return list;
}

QString waiting()
{
    return u"waiting"_s;
}

} // namespace PanelItems
