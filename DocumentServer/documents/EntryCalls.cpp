#include "DocumentCalls.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 allTypes = 0;
constexpr qint64 mostTypes = 7;

QString ownerNameOf(const Entry &entry, const Caller &caller)
{
    return entry.owner == caller.userid ? caller.account.name() : QString();
}

QJsonObject recordOf(const Place &place, const Caller &caller)
{
    return recordOf(place.entry, place.node, ownerNameOf(place.entry, caller));
}

/// The entries that the caller may see.
QList<Place> visibleEntries(const ReadingCall &call)
{
    QList<Place> visible;
    const QList<Entry> entries = entriesOf(call.database, call.caller.userid);
    for (const Entry &entry : entries) {
        try {
            visible.append(call.places.find(docidOf(entry)));
        } catch (const ApiError &hidden) {
            if (hidden.code != NoPermission)
                throw;
        }
    }
    return visible;
}

QJsonObject listEntries(const ReadingCall &call)
{
    const qint64 type = requiredNumber(call.body(), "doctype", allTypes, mostTypes);
    QJsonArray entries;
    for (const Place &place : visibleEntries(call))
        if (type == allTypes || place.entry.type == type)
            entries.append(recordOf(place, call.caller));
    return {{u"docinfos"_s, entries}};
}

QJsonObject entryInformation(const ReadingCall &call)
{
    const Place place = call.places.find(docidIn(call.body()));
    if (place.node.parent == 0)
        return recordOf(place, call.caller);
    return recordOf(call.places.find(docidOf(place.entry)), call.caller);
}

QJsonObject quota(const ReadingCall &call)
{
    QJsonArray quotas;
    for (const Place &place : visibleEntries(call))
        quotas.append(QJsonObject{{u"docid"_s, docidOf(place.entry)},
                                  {u"docname"_s, place.entry.name},
                                  {u"doctype"_s, place.entry.type},
                                  {u"typename"_s, entryTypeName(place.entry.type)},
                                  {u"quota"_s, quotaOf(place.entry, call.caller.account, *call.call.scenario)},
                                  {u"used"_s, place.entry.used}});
    return {{u"quotainfos"_s, quotas}};
}
} // namespace

void addEntryCalls(CallTable *table, Services &services)
{
    table->insert(u"entrydoc2.get"_s, documentEntry<ReadingCall>(services, listEntries));
    table->insert(u"entrydoc2.getdocinfo"_s, documentEntry<ReadingCall>(services, entryInformation));
    table->insert(u"entrydoc2.getuserquota"_s, documentEntry<ReadingCall>(services, quota));
}

} // namespace documentserver
