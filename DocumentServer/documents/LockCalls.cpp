#include "DocumentCalls.h"

#include "DocumentServer/PasswordHash.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 endless = -1;
constexpr qint64 longestLife = 10LL * 365 * 24 * 3600;
constexpr qsizetype mostRefreshed = 1000;

/// Takes the lock, or holds on to it; throws Locked where another user has it.
QString hold(WritingCall &call, const Place &file, qint64 life)
{
    file.require(MayWrite);
    requireUnlocked(call.database, file.node.id, call.caller, call.now);
    const auto held = findLock(call.database, file.node.id, call.now);
    Lock lock;
    lock.node = file.node.id;
    lock.userid = call.caller.userid;
    lock.account = call.caller.account.name();
    lock.name = call.caller.name;
    lock.life = life;
    lock.expires = life < 0 ? endless : call.now + life * 1'000'000;
    lock.lockid = held ? held->lockid : QString::fromLatin1(randomBytes(8).toHex());
    putLock(call.database, lock);
    return lock.lockid;
}

/// A user may always take his own lock again, so that "force" decides nothing.
QJsonObject tryLock(WritingCall &call)
{
    if (call.body().contains("force"_L1))
        requiredFlag(call.body(), "force");
    const bool isTimed = call.body().contains("expiretime"_L1);
    const qint64 life = isTimed ? requiredNumber(call.body(), "expiretime", endless, longestLife) : endless;
    const QString lockid = hold(call, call.places.findFile(docidIn(call.body())), life);
    call.session.commit();
    return {{u"lockid"_s, lockid}};
}

QJsonObject unlock(WritingCall &call)
{
    const Place file = call.places.findFile(docidIn(call.body()));
    requireUnlocked(call.database, file.node.id, call.caller, call.now);
    removeLock(call.database, file.node.id);
    call.session.commit();
    return {};
}

QJsonObject refresh(WritingCall &call)
{
    const QJsonValue given = call.body().value("lockinfos"_L1);
    const QJsonArray infos = given.toArray();
    if (!given.isArray() || infos.size() > mostRefreshed)
        refuseParameter(u"lockinfos"_s);
    for (const QJsonValue &info : infos) {
        const Place file = call.places.findFile(docidIn(info.toObject()));
        const auto held = findLock(call.database, file.node.id, call.now);
        hold(call, file, held ? held->life : endless);
    }
    call.session.commit();
    return {};
}

QJsonObject infoOf(const std::optional<Lock> &lock)
{
    return {{u"islocked"_s, lock.has_value()},
            {u"lockername"_s, lock ? lock->name : QString()},
            {u"lockeraccount"_s, lock ? lock->account : QString()}};
}

QJsonObject lockInformation(const ReadingCall &call)
{
    const Place file = call.places.findFile(docidIn(call.body()));
    return infoOf(findLock(call.database, file.node.id, call.now));
}

Reply locksInside(const ReadingCall &call)
{
    const Place folder = call.places.findFolder(docidIn(call.body()));
    QJsonArray list;
    for (const NamedLock &named : locksInFolder(call.database, folder.node.id, call.now)) {
        QJsonObject info = infoOf(named.lock);
        info.insert("docid"_L1, docidOf(named.node));
        info.insert("name"_L1, named.node.name);
        list.append(info);
    }
    return {200, QJsonDocument(list).toJson(QJsonDocument::Compact)};
}
} // namespace

void addLockCalls(CallTable *table, Services &services)
{
    table->insert(u"autolock.trylock"_s, documentEntry<WritingCall>(services, tryLock));
    table->insert(u"autolock.unlock"_s, documentEntry<WritingCall>(services, unlock));
    table->insert(u"autolock.refresh"_s, documentEntry<WritingCall>(services, refresh));
    table->insert(u"autolock.getlockinfo"_s, documentEntry<ReadingCall>(services, lockInformation));
    table->insert(u"autolock.getdirlockinfo"_s, readingEntry(services, locksInside));
}

} // namespace documentserver
