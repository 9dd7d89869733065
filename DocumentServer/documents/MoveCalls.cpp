#include "DocumentCalls.h"
#include "Revisions.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// A file or folder on its way to another name or another folder.
struct Journey {
    Place from;
    Place folder; ///< where it goes
    QString name;
    OnDuplicate onDuplicate = OnDuplicate::Refuse;
};

template <bool isFile> Place findKind(const WritingCall &call)
{
    const QString docid = docidIn(call.body());
    return isFile ? call.places.findFile(docid) : call.places.findFolder(docid);
}

void requireNoLocks(const WritingCall &call, const Node &node, ErrorCode code)
{
    if (node.isFile)
        requireUnlocked(call.database, node.id, call.caller, call.now, code);
    else
        requireUnlockedBelow(call.database, node.id, call.caller, call.now);
}

/// The bytes counted where it comes from are counted where it goes to.
void carryUsage(const WritingCall &call, const Journey &journey, qint64 bytes, qint64 replaced)
{
    const bool staysInside = journey.from.entry.root == journey.folder.entry.root;
    if (!staysInside)
        requireRoom(call, journey.folder.entry, bytes - replaced);
    changeUsed(call.database, journey.from.entry.root, -bytes);
    changeUsed(call.database, journey.folder.entry.root, bytes - replaced);
}

/// The file in the way gets the content as another revision; the one that came is no more.
Node overwrite(const WritingCall &call, const Journey &journey, Node holder)
{
    if (!holder.isFile || !journey.from.node.isFile)
        refuseTakenName(holder);
    requireRevisionAllowed(call, call.places.place(holder));
    auto revision = findRevision(call.database, journey.from.node.id, journey.from.node.revision);
    if (!revision)
        throw ApiError{InternalError, {}, u"the revision is missing"_s, {}};
    carryUsage(call, journey, journey.from.node.size, holder.size);
    revision->name = holder.name;
    revision->editor = call.caller.name;
    addRevision(call.database, &holder, &*revision, mostRevisions(call));
    removeTree(call.database, journey.from.node.id);
    return holder;
}

Node arrive(const WritingCall &call, const Journey &journey)
{
    Node node = journey.from.node;
    const qint64 target = journey.folder.node.id;
    const qint64 origin = node.parent;
    const auto holder = findChild(call.database, target, journey.name);
    const bool isTaken = holder && holder->id != node.id;
    if (isTaken && journey.onDuplicate == OnDuplicate::Refuse)
        refuseTakenName(*holder);
    if (isTaken && journey.onDuplicate == OnDuplicate::Overwrite) {
        node = overwrite(call, journey, *holder);
    } else {
        node.name = freeNameBelow(call.database, target, journey.name, node.isFile, node.id);
        node.parent = target;
        if (origin != target)
            carryUsage(call, journey, sizeOfTree(call.database, node.id).bytes, 0);
        updateNode(call.database, &node);
    }
    touchFolder(call.database, origin, call.now);
    touchFolder(call.database, target, call.now);
    return node;
}

QJsonObject complete(WritingCall &call, const Journey &journey)
{
    const Node node = arrive(call, journey);
    call.session.commit();
    call.services.documents.sweep();
    return {{u"docid"_s, docidOf(node)}, {u"name"_s, node.name}};
}

template <bool isFile> QJsonObject rename(WritingCall &call)
{
    const QString name = legalNameIn(call.body());
    const OnDuplicate onDuplicate = onDuplicateIn(call.body(), OnDuplicate::Refuse);
    const Place place = findKind<isFile>(call);
    call.places.requireChangeable(place, Places::Change::Rename);
    place.require(MayWrite);
    if (isFile)
        call.places.requireLegalType(name, Places::Change::Rename);
    requireNoLocks(call, place.node, Locked);
    const auto parent = findNode(call.database, place.node.parent);
    if (!parent)
        throw ApiError{DocumentGone, {}, {}, {}};
    if (name == place.node.name)
        return {{u"docid"_s, docidOf(place.node)}, {u"name"_s, name}};
    return complete(call, {place, call.places.place(*parent), name, onDuplicate});
}

void requireFits(const WritingCall &call, const Place &place, const Place &folder)
{
    const bool goesInside = std::any_of(folder.steps.begin(), folder.steps.end(),
                                        [&place](const Step &step) { return step.id == place.node.id; });
    if (goesInside)
        refuseParameter(u"destparent: it lies inside the folder"_s);
    if (folder.steps.size() + sizeOfTree(call.database, place.node.id).levels > deepestLevel)
        refuseParameter(u"destparent: too deep"_s);
}

template <bool isFile> QJsonObject move(WritingCall &call)
{
    const OnDuplicate onDuplicate = onDuplicateIn(call.body(), OnDuplicate::Refuse);
    const Place place = findKind<isFile>(call);
    call.places.requireChangeable(place, Places::Change::Move);
    place.require(MayDelete);
    call.places.requireBelow(place, MayDelete);
    const Place folder = call.places.findFolder(docidIn(call.body(), "destparent"));
    call.places.requireChangeable(folder, Places::Change::Create);
    folder.require(MayCreate);
    requireNoLocks(call, place.node, MoveLocked);
    requireFits(call, place, folder);
    if (folder.node.id == place.node.parent)
        return {{u"docid"_s, docidOf(place.node)}, {u"name"_s, place.node.name}};
    return complete(call, {place, folder, place.node.name, onDuplicate});
}

template <bool isFile> QJsonObject remove(WritingCall &call)
{
    const Place place = findKind<isFile>(call);
    call.places.requireChangeable(place, Places::Change::Delete);
    place.require(MayDelete);
    call.places.requireBelow(place, MayDelete);
    requireNoLocks(call, place.node, Locked);
    changeUsed(call.database, place.entry.root, -sizeOfTree(call.database, place.node.id).bytes);
    removeTree(call.database, place.node.id);
    touchFolder(call.database, place.node.parent, call.now);
    call.session.commit();
    call.services.documents.sweep();
    return {};
}
} // namespace

void addMoveCalls(CallTable *table, Services &services)
{
    table->insert(u"dir.rename"_s, documentEntry<WritingCall>(services, rename<false>));
    table->insert(u"file.rename"_s, documentEntry<WritingCall>(services, rename<true>));
    table->insert(u"dir.move"_s, documentEntry<WritingCall>(services, move<false>));
    table->insert(u"file.move"_s, documentEntry<WritingCall>(services, move<true>));
    table->insert(u"dir.delete"_s, documentEntry<WritingCall>(services, remove<false>));
    table->insert(u"file.delete"_s, documentEntry<WritingCall>(services, remove<true>));
}

} // namespace documentserver
