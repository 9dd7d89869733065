#pragma once

#include "Locks.h"

namespace documentserver
{

// Each kind of document call adds its own. The services must outlive the table.
void addEntryCalls(CallTable *table, Services &services);
void addFolderCalls(CallTable *table, Services &services);
void addFileCalls(CallTable *table, Services &services);
void addContentCalls(CallTable *table, Services &services);
void addUploadCall(CallTable *table, Services &services);
void addPathCalls(CallTable *table, Services &services);
void addMoveCalls(CallTable *table, Services &services);
void addLockCalls(CallTable *table, Services &services);
void addPermissionCalls(CallTable *table, Services &services);
void addFavoriteCalls(CallTable *table, Services &services);

/// What every document call works with, whether it only reads or also changes: `Session` is Documents::Reading or
/// Documents::Writing.
template <class Session> class DocumentCall
{
public:
    DocumentCall(const Call &request, Services &all)
        : call(request), services(all), caller(callerOf(request, all)), session(all.documents),
          database(session.database()), places(database, request, caller), now(microseconds(all))
    {
    }

    const QJsonObject &body() const { return call.body; }

    const Call &call;
    Services &services;
    const Caller caller;
    Session session;
    Database &database;
    const Places places;
    const qint64 now;
};
using ReadingCall = DocumentCall<Documents::Reading>;
using WritingCall = DocumentCall<Documents::Writing>;

/// Wraps a function of the call's own kind into a table entry.
template <class Kind, class Function> CallEntry documentEntry(Services &services, Function function)
{
    return {[&services, function](const Call &call) {
        Kind kind(call, services);
        return QJsonObject(function(kind));
    }};
}

/// The same for a function that makes the whole reply.
template <class Function> CallEntry readingEntry(Services &services, Function function)
{
    CallEntry entry;
    entry.replyHandler = [&services, function](const Call &call) { return function(ReadingCall(call, services)); };
    return entry;
}

/// Throws unless the caller may give the file another content.
template <class Session> void requireRevisionAllowed(const DocumentCall<Session> &call, const Place &file)
{
    file.require(MayWrite);
    call.places.requireChangeable(file, Places::Change::Upload);
    requireUnlocked(call.database, file.node.id, call.caller, call.now);
}

/// Throws QuotaExceeded where more bytes are to come than there are free ones.
void requireRoomFor(qint64 growth, qint64 free);
/// The same for what uploads under way leave of an entry document.
inline void requireRoom(const WritingCall &call, const Entry &entry, qint64 growth)
{
    const qint64 free = quotaOf(entry, call.caller.account, *call.call.scenario) - entry.used;
    requireRoomFor(growth, free - call.services.documents.reservations.held(entry.root));
}

/// How many revisions a file keeps.
template <class Session> qint64 mostRevisions(const DocumentCall<Session> &call)
{
    return std::max<qint64>(1, call.call.scenario->number("documents.revisions"));
}

/// What to do with a name that is taken.
enum class OnDuplicate { Refuse = 1, FreeName = 2, Overwrite = 3 };
OnDuplicate onDuplicateIn(const QJsonObject &body, OnDuplicate usual);
[[noreturn]] void refuseTakenName(const Node &holder);
/// The "name" of a body; throws IllegalParameter or IllegalName.
QString legalNameIn(const QJsonObject &body);
/// IllegalParameter, naming what is wrong.
[[noreturn]] void refuseParameter(const QString &what);

} // namespace documentserver
