#include "DocumentCalls.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// A child that hides from the caller needs a rule of its own, so that plain folders are listed without looking.
bool isHidden(const ReadingCall &call, const Node &node, const QSet<QString> &ruled)
{
    if (!ruled.contains(node.name))
        return false;
    try {
        call.places.place(node);
        return false;
    } catch (const ApiError &) {
        return true;
    }
}

/// Names directly below the folder that rules are about.
QSet<QString> ruledNames(const ReadingCall &call, const QString &folder)
{
    QSet<QString> names;
    const QJsonArray rules = call.call.scenario->array("documents.permissions");
    for (const QJsonValue &rule : rules) {
        const QString path = rule.toObject().value("path"_L1).toString();
        if (path.startsWith(folder + u'/'))
            names.insert(path.mid(folder.size() + 1));
    }
    return names;
}

using Order = std::function<bool(const Node &, const Node &)>;

/// Null: by name, as they come.
Order orderIn(const QJsonObject &body)
{
    const QString by = optionalText(body, "by", 16);
    const QString sort = optionalText(body, "sort", 16);
    const bool known = by.isEmpty() || by == "name"_L1 || by == "size"_L1 || by == "time"_L1;
    if (!known || !(sort.isEmpty() || sort == "asc"_L1 || sort == "desc"_L1))
        refuseParameter(known ? u"sort"_s : u"by"_s);
    const bool descending = sort == "desc"_L1;
    if (by == "size"_L1)
        return [=](const Node &a, const Node &b) { return descending ? a.size > b.size : a.size < b.size; };
    if (by == "time"_L1)
        return [=](const Node &a, const Node &b) {
            return descending ? a.modified > b.modified : a.modified < b.modified;
        };
    if (descending)
        return [](const Node &a, const Node &b) { return a.name > b.name; };
    return nullptr;
}

/// Records as text, put together while they come: a folder may hold very many.
class Listing
{
public:
    void add(const Node &node)
    {
        QByteArray &list = node.isFile ? files : folders;
        if (!list.isEmpty())
            list += ',';
        appendRecord(&list, node);
    }
    QByteArray text() const { return R"({"dirs":[)" + folders + R"(],"files":[)" + files + "]}"; }

private:
    QByteArray folders;
    QByteArray files;
};

Reply listFolder(const ReadingCall &call)
{
    const Place folder = call.places.findFolder(docidIn(call.body()));
    if (call.body().contains("attr"_L1))
        requiredFlag(call.body(), "attr");
    const Order order = orderIn(call.body());
    const QSet<QString> ruled = ruledNames(call, folder.path);
    Listing listing;
    QList<Node> later; // those that are sorted, or looked at more closely
    eachChild(call.database, folder.node.id, [&](const Node &node) {
        if (order || ruled.contains(node.name))
            later.append(node);
        else
            listing.add(node);
    });
    if (order)
        std::stable_sort(later.begin(), later.end(), order);
    for (const Node &node : std::as_const(later))
        if (!isHidden(call, node, ruled))
            listing.add(node);
    Reply reply;
    reply.stream = std::make_shared<ReplyStream>(listing.text());
    return reply;
}

Node newFolder(const WritingCall &call, const Place &parent, const QString &name)
{
    Node folder;
    folder.parent = parent.node.id;
    folder.home = parent.entry.key;
    folder.name = name;
    folder.modified = folder.clientModified = folder.created = call.now;
    folder.creator = folder.editor = call.caller.name;
    folder.creatorAccount = call.caller.account.name();
    return folder;
}

QJsonObject createFolder(WritingCall &call)
{
    const QString name = legalNameIn(call.body());
    const OnDuplicate onDuplicate = onDuplicateIn(call.body(), OnDuplicate::Refuse);
    const Place parent = call.places.findFolder(docidIn(call.body()));
    parent.require(MayCreate);
    call.places.requireChangeable(parent, Places::Change::Create);
    if (parent.steps.size() > deepestLevel)
        refuseParameter(u"docid: too deep"_s);
    Node folder = newFolder(call, parent, name);
    if (const auto holder = findChild(call.database, parent.node.id, name)) {
        if (onDuplicate == OnDuplicate::Overwrite && !holder->isFile)
            return recordOf(*holder);
        if (onDuplicate != OnDuplicate::FreeName)
            refuseTakenName(*holder);
        folder.name = freeNameBelow(call.database, parent.node.id, name, false);
    }
    insertNode(call.database, &folder);
    touchFolder(call.database, parent.node.id, call.now);
    call.session.commit();
    return recordOf(folder);
}

QJsonObject folderSize(const ReadingCall &call)
{
    const Place folder = call.places.findFolder(docidIn(call.body()));
    const TreeSize size = sizeOfTree(call.database, folder.node.id);
    return {
        {u"dirnum"_s, size.folders}, {u"filenum"_s, size.files}, {u"totalsize"_s, size.bytes}, {u"recyclesize"_s, 0}};
}
} // namespace

void addFolderCalls(CallTable *table, Services &services)
{
    table->insert(u"dir.create"_s, documentEntry<WritingCall>(services, createFolder));
    table->insert(u"dir.size"_s, documentEntry<ReadingCall>(services, folderSize));
    table->insert(u"dir.list"_s, readingEntry(services, listFolder));
}

} // namespace documentserver
