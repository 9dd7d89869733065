#include "DocumentCalls.h"
#include "Revisions.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
QJsonObject attributesOf(const Place &place)
{
    QJsonObject attributes = recordOf(place.node);
    attributes.insert("namepath"_L1, place.path);
    attributes.insert("site"_L1, u""_s);
    return attributes;
}

QJsonObject folderAttributes(const ReadingCall &call)
{
    return attributesOf(call.places.findFolder(docidIn(call.body())));
}

QJsonObject fileAttributes(const ReadingCall &call)
{
    return attributesOf(call.places.findFile(docidIn(call.body())));
}

QJsonObject metadata(const ReadingCall &call)
{
    const QJsonObject record = recordOf(call.places.findFile(docidIn(call.body())).node);
    QJsonObject some;
    for (const QLatin1String member :
         {"rev"_L1, "name"_L1, "size"_L1, "modified"_L1, "client_mtime"_L1, "editor"_L1, "docid"_L1})
        some.insert(member, record.value(member));
    return some;
}

Reply revisions(const ReadingCall &call)
{
    const Place file = call.places.findFile(docidIn(call.body()));
    file.require(MayRead);
    QJsonArray list;
    for (const Revision &revision : revisionsOf(call.database, file.node.id))
        list.append(recordOf(revision));
    return {200, QJsonDocument(list).toJson(QJsonDocument::Compact)};
}

/// The old content becomes the newest revision; those in between stay.
QJsonObject restoreRevision(WritingCall &call)
{
    const qint64 wanted = parseRevision(requiredText(call.body(), "rev", 64));
    const Place file = call.places.findFile(docidIn(call.body()));
    requireRevisionAllowed(call, file);
    const auto old = findRevision(call.database, file.node.id, wanted);
    if (!old)
        throw ApiError{DocumentGone, {}, u"no such revision"_s, {}};
    const qint64 growth = old->size - file.node.size;
    requireRoom(call, file.entry, growth);
    Revision revision = *old;
    revision.name = file.node.name;
    revision.modified = call.now;
    revision.editor = call.caller.name;
    Node node = file.node;
    addRevision(call.database, &node, &revision, mostRevisions(call));
    changeUsed(call.database, file.entry.root, growth);
    call.session.commit();
    call.services.documents.sweep();
    return recordOf(node);
}
} // namespace

void addFileCalls(CallTable *table, Services &services)
{
    table->insert(u"dir.attribute"_s, documentEntry<ReadingCall>(services, folderAttributes));
    table->insert(u"file.attribute"_s, documentEntry<ReadingCall>(services, fileAttributes));
    table->insert(u"file.metadata"_s, documentEntry<ReadingCall>(services, metadata));
    table->insert(u"file.restorerevision"_s, documentEntry<WritingCall>(services, restoreRevision));
    table->insert(u"file.revisions"_s, readingEntry(services, revisions));
}

} // namespace documentserver
