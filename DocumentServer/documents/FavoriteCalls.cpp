#include "DocumentCalls.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype mostChecked = 10'000;

template <bool isFavorite> QJsonObject mark(WritingCall &call)
{
    const Place place = call.places.find(docidIn(call.body()));
    call.database.run(isFavorite ? "INSERT OR IGNORE INTO favorites(userid, node) VALUES(?, ?)"
                                 : "DELETE FROM favorites WHERE userid = ? AND node = ?",
                      {call.caller.userid, place.node.id});
    call.session.commit();
    return {};
}

bool isFavorite(const ReadingCall &call, const QString &docid)
{
    const auto node = findNode(call.database, parseDocid(docid));
    return node &&
           !call.database.run("SELECT 1 FROM favorites WHERE userid = ? AND node = ?", {call.caller.userid, node->id})
                .isEmpty();
}

/// What is gone is nobody's favorite.
Reply check(const ReadingCall &call)
{
    const QJsonValue given = call.body().value("docids"_L1);
    const QJsonArray docids = given.toArray();
    if (!given.isArray() || docids.size() > mostChecked)
        refuseParameter(u"docids"_s);
    QJsonArray marks;
    for (const QJsonValue &docid : docids) {
        if (!docid.isString())
            refuseParameter(u"docids"_s);
        marks.append(QJsonObject{{u"docid"_s, docid}, {u"favorited"_s, isFavorite(call, docid.toString())}});
    }
    return {200, QJsonDocument(marks).toJson(QJsonDocument::Compact)};
}
} // namespace

void addFavoriteCalls(CallTable *table, Services &services)
{
    table->insert(u"favorites.add"_s, documentEntry<WritingCall>(services, mark<true>));
    table->insert(u"favorites.delete"_s, documentEntry<WritingCall>(services, mark<false>));
    CallEntry checking = readingEntry(services, check);
    checking.answersWithArray = true;
    table->insert(u"favorites.check"_s, checking);
}

} // namespace documentserver
