#pragma once

#include "DocumentServer/CallTable.h"
#include "Entries.h"

namespace documentserver
{

/// What a user may do with a document; the bits of a permission.
enum Permission : int {
    MayShow = 1,
    MayRead = 2,
    MayDownload = 4,
    MayCreate = 8,
    MayWrite = 16,
    MayDelete = 32,
    MayAll = 63,
};

/// Who calls: the account behind the token.
struct Caller {
    Account account;
    QString userid;
    QString name; ///< for others to read
};
/// Throws TokenInvalid or AccountDisabled. Sees to it that the user's entry document is there.
Caller callerOf(const Call &call, Services &services);

/// A document with where it is and what the caller may do there.
struct Place {
    Node node;
    Entry entry;
    QList<Step> steps; ///< from the entry down to the node
    QString path;      ///< "Entry/folder/file"
    int allowed = 0;

    /// Throws NoPermission.
    void require(int permission) const;
};

/// Finds the documents of one caller. Each method throws what the client is to get.
class Places
{
public:
    Places(Database &storage, const Call &request, const Caller &who)
        : database(storage), scenario(*request.scenario), caller(who)
    {
    }

    /// DocumentGone where there is none that the caller may see.
    Place find(const QString &docid) const;
    Place findFile(const QString &docid) const;
    Place findFolder(const QString &docid) const;
    Place place(const Node &node) const;

    /// What the scenario forbids besides permissions.
    enum class Change { Upload, Create, Rename, Move, Delete };
    void requireChangeable(const Place &place, Change change) const;
    /// NoPermission where a rule for something below the folder takes the permission away.
    void requireBelow(const Place &folder, int permission) const;
    /// The rules for the document and all that it lies in, whoever they are for.
    QList<QJsonObject> rulesFor(const QString &path) const;
    /// TypeBanned or RenameTypeBanned.
    void requireLegalType(const QString &name, Change change) const;

private:
    int allowedIn(const Entry &entry, const QString &path) const;
    bool isListed(const char *setting, const QString &text) const;
    bool isBelowListed(const char *setting, const QString &path) const;

    Database &database;
    const Scenario &scenario;
    const Caller &caller;
};

/// The "docid" of a body; throws IllegalParameter.
QString docidIn(const QJsonObject &body, const char *member = "docid");
/// Bytes that may be stored in the entry document altogether.
qint64 quotaOf(const Entry &entry, const Account &account, const Scenario &scenario);
/// The clock that documents go by, in microseconds since 1970.
qint64 microseconds(const Services &services);

} // namespace documentserver
