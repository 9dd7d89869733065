#include "Place.h"

#include "DocumentNames.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype longestDocid = 1024;

bool isInside(const QString &path, const QString &outer)
{
    return path == outer || (path.startsWith(outer) && path.at(outer.size()) == u'/');
}

int allowedBy(const QJsonObject &rule)
{
    return rule.value("allow"_L1).toInt(MayAll) & ~rule.value("deny"_L1).toInt(0);
}

bool isFor(const QJsonObject &rule, const QString &account)
{
    const QString named = rule.value("account"_L1).toString(u"*"_s);
    return named == "*"_L1 || named == account;
}
} // namespace

Caller callerOf(const Call &call, Services &services)
{
    const auto account = services.accounts.find(call.session->account);
    if (!account || account->userid() != call.session->userid)
        throw ApiError{TokenInvalid, {}, {}, {}};
    if (account->isDisabled())
        throw ApiError{AccountDisabled, {}, {}, {}};
    bool isKnown = false;
    {
        Documents::Reading reading(services.documents);
        isKnown = hasOwnEntry(reading.database(), *account);
    }
    if (!isKnown) {
        Documents::Writing change(services.documents);
        ensureCommonEntries(change.database(), microseconds(services));
        ensureOwnEntry(change.database(), *account, microseconds(services));
        change.commit();
    }
    return {*account, account->userid(), displayNameOf(*account)};
}

void Place::require(int permission) const
{
    if ((allowed & permission) != permission)
        throw ApiError{NoPermission, {}, u"no permission for %1"_s.arg(node.name), {}};
}

Place Places::find(const QString &docid) const
{
    const auto node = findNode(database, parseDocid(docid));
    if (!node)
        throw ApiError{DocumentGone, {}, {}, {}};
    return place(*node);
}

Place Places::findFile(const QString &docid) const
{
    Place found = find(docid);
    if (!found.node.isFile)
        throw ApiError{DocumentGone, {}, u"it is a folder"_s, {}};
    return found;
}

Place Places::findFolder(const QString &docid) const
{
    Place found = find(docid);
    if (found.node.isFile)
        throw ApiError{DocumentGone, {}, u"it is a file"_s, {}};
    return found;
}

Place Places::place(const Node &node) const
{
    Place found{node, {}, stepsTo(database, node.id), {}, 0};
    const auto entry = found.steps.isEmpty() ? std::nullopt : findEntry(database, found.steps.first().id);
    if (!entry)
        throw ApiError{DocumentGone, {}, {}, {}};
    found.entry = *entry;
    QStringList names;
    for (const Step &step : std::as_const(found.steps))
        names.append(step.name);
    found.path = names.join(u'/');
    found.allowed = allowedIn(found.entry, found.path);
    found.require(MayShow);
    return found;
}

/// The rule for the innermost folder counts; of two for the same, the last.
int Places::allowedIn(const Entry &entry, const QString &path) const
{
    int allowed = entry.owner.isEmpty() || entry.owner == caller.userid ? MayAll : 0;
    qsizetype innermost = -1;
    for (const QJsonObject &rule : rulesFor(path)) {
        const qsizetype length = rule.value("path"_L1).toString().size();
        if (!isFor(rule, caller.account.name()) || length < innermost)
            continue;
        innermost = length;
        allowed = allowedBy(rule);
    }
    return allowed;
}

QList<QJsonObject> Places::rulesFor(const QString &path) const
{
    QList<QJsonObject> fitting;
    const QJsonArray rules = scenario.array("documents.permissions");
    for (const QJsonValue &rule : rules)
        if (isInside(path, rule.toObject().value("path"_L1).toString()))
            fitting.append(rule.toObject());
    return fitting;
}

void Places::requireBelow(const Place &folder, int permission) const
{
    const QJsonArray rules = scenario.array("documents.permissions");
    for (const QJsonValue &value : rules) {
        const QJsonObject rule = value.toObject();
        const bool isBelow = isInside(rule.value("path"_L1).toString(), folder.path);
        if (isBelow && isFor(rule, caller.account.name()) && (allowedBy(rule) & permission) != permission)
            throw ApiError{NoPermission, {}, u"no permission for something inside"_s, {}};
    }
}

bool Places::isListed(const char *setting, const QString &text) const
{
    return scenario.array(setting).contains(text);
}

bool Places::isBelowListed(const char *setting, const QString &path) const
{
    const QJsonArray listed = scenario.array(setting);
    return std::any_of(listed.begin(), listed.end(),
                       [&path](const QJsonValue &outer) { return isInside(path, outer.toString()); });
}

void Places::requireChangeable(const Place &place, Change change) const
{
    const bool isRemoval = change == Change::Delete || change == Change::Move || change == Change::Rename;
    if (isRemoval && place.node.parent == 0)
        throw ApiError{NoPermission, {}, u"an entry document stays where it is"_s, {}};
    if (isRemoval && isBelowListed("documents.outbox", place.path))
        throw ApiError{OutboxRefused, {}, {}, {}};
    if (isListed("documents.frozen_users", caller.account.name()))
        throw ApiError{UserFrozen, {}, {}, {}};
    if (isBelowListed("documents.frozen_documents", place.path))
        throw ApiError{DocumentFrozen, {}, {}, {}};
    if (change == Change::Delete)
        return;
    if (isListed("documents.unauthenticated_users", caller.account.name()))
        throw ApiError{UserNotAuthenticated, {}, {}, {}};
    if (isListed("documents.unauthenticated_users", place.node.creatorAccount))
        throw ApiError{CreatorNotAuthenticated, {}, {}, {}};
}

void Places::requireLegalType(const QString &name, Change change) const
{
    const QString extension = splitName(name, true).extension.toLower();
    if (!extension.isEmpty() && isListed("documents.banned_types", extension.mid(1)))
        throw ApiError{change == Change::Rename ? RenameTypeBanned : TypeBanned, {}, extension, {}};
}

QString docidIn(const QJsonObject &body, const char *member)
{
    return requiredText(body, member, longestDocid);
}

qint64 quotaOf(const Entry &entry, const Account &account, const Scenario &scenario)
{
    const QJsonValue own = account.json().value("quota"_L1);
    return entry.owner == account.userid() && own.isDouble() ? own.toInteger() : scenario.number("documents.quota");
}

qint64 microseconds(const Services &services)
{
    using namespace std::chrono;
    if (services.options.now)
        return services.now() * 1000;
    return duration_cast<std::chrono::microseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace documentserver
