#include "DocumentCalls.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
QJsonObject listPermissions(const ReadingCall &call)
{
    const Place place = call.places.find(docidIn(call.body()));
    const bool isShared = place.entry.owner.isEmpty();
    QJsonArray infos{QJsonObject{{u"accessorid"_s, place.entry.owner},
                                 {u"accessorname"_s, isShared ? u"*"_s : place.entry.name},
                                 {u"namepath"_s, place.entry.name},
                                 {u"allowvalue"_s, int(MayAll)},
                                 {u"denyvalue"_s, 0}}};
    for (const QJsonObject &rule : call.places.rulesFor(place.path))
        infos.append(QJsonObject{{u"accessorname"_s, rule.value("account"_L1).toString(u"*"_s)},
                                 {u"namepath"_s, rule.value("path"_L1)},
                                 {u"allowvalue"_s, rule.value("allow"_L1).toInt(MayAll)},
                                 {u"denyvalue"_s, rule.value("deny"_L1).toInt(0)}});
    return {{u"perminfos"_s, infos}};
}

QJsonObject ownPermissions(const ReadingCall &call)
{
    const Place place = call.places.find(docidIn(call.body()));
    const QString userid = optionalText(call.body(), "userid", 256);
    if (!userid.isEmpty() && userid != call.caller.userid)
        throw ApiError{NoPermission, {}, u"another user's permissions"_s, {}};
    return {{u"allowvalue"_s, place.allowed}, {u"denyvalue"_s, MayAll & ~place.allowed}};
}

QJsonObject checkPermission(const ReadingCall &call)
{
    const int wanted = static_cast<int>(requiredNumber(call.body(), "perm", 1, MayAll));
    const Place place = call.places.find(docidIn(call.body()));
    return {{u"result"_s, (place.allowed & wanted) == wanted ? 0 : 1}};
}

/// Documents that everybody shares belong to whoever made them.
struct Owner {
    QString userid;
    QString name;
};
Owner ownerOf(const ReadingCall &call, const Place &place)
{
    if (!place.entry.owner.isEmpty())
        return {place.entry.owner, place.entry.name};
    const auto creator = call.services.accounts.find(place.node.creatorAccount);
    return creator ? Owner{creator->userid(), displayNameOf(*creator)} : Owner();
}

QJsonObject owners(const ReadingCall &call)
{
    const Owner owner = ownerOf(call, call.places.find(docidIn(call.body())));
    QJsonArray infos;
    if (!owner.userid.isEmpty())
        infos.append(QJsonObject{{u"userid"_s, owner.userid}, {u"name"_s, owner.name}});
    return {{u"ownerinfos"_s, infos}};
}

QJsonObject isOwner(const ReadingCall &call)
{
    const Owner owner = ownerOf(call, call.places.find(docidIn(call.body())));
    return {{u"isowner"_s, owner.userid == call.caller.userid}};
}
} // namespace

void addPermissionCalls(CallTable *table, Services &services)
{
    table->insert(u"perm1.list"_s, documentEntry<ReadingCall>(services, listPermissions));
    table->insert(u"perm2.get"_s, documentEntry<ReadingCall>(services, listPermissions));
    table->insert(u"perm1.checkall"_s, documentEntry<ReadingCall>(services, ownPermissions));
    table->insert(u"perm1.check"_s, documentEntry<ReadingCall>(services, checkPermission));
    table->insert(u"perm1.getinternallinktemplate"_s, {[](const Call &call) {
                      return QJsonObject{{u"allowperm"_s, call.scenario->number("documents.allowperm")}};
                  }});
    table->insert(u"owner.get"_s, documentEntry<ReadingCall>(services, owners));
    table->insert(u"owner.check"_s, documentEntry<ReadingCall>(services, isOwner));
}

} // namespace documentserver
