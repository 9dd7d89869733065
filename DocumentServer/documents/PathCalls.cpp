#include "DocumentCalls.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype longestPath = 512 * 1024;

template <bool isFile> QJsonObject suggestName(const ReadingCall &call)
{
    const QString name = legalNameIn(call.body());
    const Place folder = call.places.findFolder(docidIn(call.body()));
    return {{u"name"_s, freeNameBelow(call.database, folder.node.id, name, isFile)}};
}

QJsonObject convertPath(const ReadingCall &call)
{
    return {{u"namepath"_s, call.places.find(docidIn(call.body())).path}};
}

std::optional<Node> walk(const ReadingCall &call, const Entry &entry, const QStringList &names)
{
    std::optional<Node> node = findNode(call.database, entry.root);
    for (const QString &name : names)
        if (node)
            node = findChild(call.database, node->id, name);
    return node;
}

/// Names of entry documents may hold slashes, so that the path cannot simply be split.
QJsonObject informationByPath(const ReadingCall &call)
{
    QString path = requiredText(call.body(), "namepath", longestPath);
    if (path.startsWith(u'/'))
        path.remove(0, 1);
    const QList<Entry> entries = entriesOf(call.database, call.caller.userid);
    for (const Entry &entry : entries) {
        if (path != entry.name && !path.startsWith(entry.name + u'/'))
            continue;
        const auto node = walk(call, entry, path.mid(entry.name.size()).split(u'/', Qt::SkipEmptyParts));
        if (node)
            return recordOf(call.places.place(*node).node);
    }
    throw ApiError{DocumentGone, {}, {}, {}};
}
} // namespace

void addPathCalls(CallTable *table, Services &services)
{
    table->insert(u"dir.getsuggestname"_s, documentEntry<ReadingCall>(services, suggestName<false>));
    table->insert(u"file.getsuggestname"_s, documentEntry<ReadingCall>(services, suggestName<true>));
    table->insert(u"file.convertpath"_s, documentEntry<ReadingCall>(services, convertPath));
    table->insert(u"file.getinfobypath"_s, documentEntry<ReadingCall>(services, informationByPath));
}

} // namespace documentserver
