#pragma once

#include "api/QBError.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <atomic>
#include <optional>

/// A JSON reply; nothing stands for "no reply".
using ServerReply = std::optional<QJsonObject>;
/// The same of a call that answers with a list.
using ServerList = std::optional<QJsonArray>;

/// The server's calls about documents: what they are, where they stand, how they change, who may do what with them.
/// Moving their contents is DocumentTransfer's. Records in replies are read with Descriptor.
///
/// Every call blocks; any thread. Where an `error` may be given it may be null, and it is written only when there is an
/// error. A failed call gives nothing, but one whose `error` parameter has no default gives the reply that came with a
/// server error as well. A lock's owner is in the error's lockUser().
class DocumentCalls
{
public:
    virtual ~DocumentCalls() = default;

    /// The latest listing of entry documents failed.
    bool bRequestEntryError() const { return entryRequestFailed; }
    /// Permission bits of getMAXAllowPerm, 0 before its first success.
    qint64 allowperm() const { return allowedPermissions; }

    // Entry documents. A listing that fails is told to the file-system service's user too.
    ServerReply requestEntries(QBError *error);
    ServerReply getInfoByDocType(int docType, QBError *error = nullptr);
    ServerReply getDocType(const QString &docid, QBError *error = nullptr);
    /// Folder name of the volume for an entry document type of 1 to 7, null for any other.
    static QString getDocTypePath(int docType);

    // Paths. "namepath" is the path on the server, entry document first.
    ServerReply getPathByDocID(const QString &docid, QBError *error = nullptr);
    /// "Folder of the category/Entry name/…", null when the server does not tell the path.
    QString convertDisplayPathByDocID(const QString &docid, QBError *error = nullptr);
    ServerReply getInfoByPath(const QString &namepath, QBError *error);
    ServerReply getInfoByPath1(const QString &namepath, QBError *error = nullptr);

    // What a document is.
    ServerReply getFileAttribute(const QString &docid, QBError *error = nullptr);
    ServerReply getDirAttribute(const QString &docid, QBError *error = nullptr);
    ServerReply getDirSize(const QString &docid, QBError *error = nullptr);
    ServerReply getFileMetadata(const QString &docid, QBError *error = nullptr);
    ServerList getFileVersion(const QString &docid, QBError *error = nullptr);
    ServerReply restorFileVersion(const QString &docid, const QString &rev, QBError *error);
    /// Folders of a hundred thousand documents are listed whole.
    ServerReply requestDirectoryListWithDocID(const QString &docid, bool needAttr, QBError *error);

    // Names that are free in a folder.
    ServerReply getFileSuggestName(const QString &parentDocid, const QString &name, QBError *error = nullptr);
    ServerReply getDirSuggestName(const QString &parentDocid, const QString &name, QBError *error = nullptr);

    // Changes. `ondup` is the server's conflict rule.
    ServerReply requestCreateDirWithParentDocID(const QString &parentDocid, const QString &name, QBError *error);
    ServerReply requestCreateDirWithParentDocID(const QString &parentDocid, const QString &name, int ondup,
                                                QBError *error);
    ServerReply requestRemoveFileWithDocID(const QString &docid, QBError *error);
    ServerReply requestRemoveDirWithDocID(const QString &docid, QBError *error);
    ServerReply requestRenameFileWithDocID(const QString &docid, const QString &newName, QBError *error);
    ServerReply requestRenameDirWithDocID(const QString &docid, const QString &newName, QBError *error);
    ServerReply moveFileWithDocID(const QString &docid, const QString &destParentDocid, QBError *error);
    ServerReply moveDirWithDocID(const QString &docid, const QString &destParentDocid, QBError *error);

    // Locks. One that is taken has no time limit.
    ServerReply requestLockFileWithDocID(const QString &docid, bool force, QBError *error);
    ServerReply requestUnLockFileWithDocID(const QString &docid, QBError *error);
    ServerReply requestRefreshLockFile(const QJsonArray &lockinfos, QBError *error);
    ServerReply getFileLockInfo(const QString &docid, QBError *error = nullptr);
    ServerList requestGetDirLockInfoWithDocID(const QString &docid, QBError *error);

    // Permissions and owners.
    ServerReply getFilePermission(const QString &docid, QBError *error = nullptr);
    ServerReply getFilePermission2(const QString &docid, QBError *error = nullptr);
    ServerReply getCurrentUserPermission(const QString &docid, QBError *error = nullptr);
    /// The reply whatever it says, an error reply too.
    ServerReply getFileCheck(const QString &docid);
    ServerReply getMAXAllowPerm(QBError *error = nullptr);
    ServerReply getFileOwnerInfo(const QString &docid, QBError *error = nullptr);
    ServerReply getIsFileOwner(const QString &docid, QBError *error = nullptr);

    // Favourites.
    ServerReply addFavoriteFile(const QString &docid, QBError *error);
    ServerReply deleteFavoriteFile(const QString &docid, QBError *error);
    ServerList checkFileFavorite(const QJsonArray &docids, QBError *error);

protected:
    struct DocumentCall {
        QString service;
        QString method;
        QByteArray body;
        qint64 replyLimit = 64 * 1024 * 1024; ///< bytes
    };
    /// Where a list's error stands: in place of the list, or in its first element.
    enum class ListErrors { InsteadOfList, InFirstElement };

    /// Sends the call with the session's token; the reply comes with a server error too.
    virtual ServerReply request(const DocumentCall &call, QBError *error) = 0;
    virtual ServerList requestList(const DocumentCall &call, ListErrors errors, QBError *error) = 0;
    virtual QString currentUserID() const = 0;
    virtual void reportToService(const QBError &error) = 0;

private:
    ServerReply replyOrNothing(const DocumentCall &call, QBError *error);
    ServerReply listing(const DocumentCall &call, QBError *problem);

    std::atomic<bool> entryRequestFailed{false};
    std::atomic<qint64> allowedPermissions{0};
};
