#pragma once

#include <QString>
#include <QVariantMap>

#include <memory>

/// A failure: domain, code, and user information with a description and often a recovery suggestion. A shared value;
/// the default-made one means "no error". Any thread.
class QBError
{
public:
    QBError() = default;
    QBError(const QString &domain, qint64 code, const QVariantMap &userInfo = {});

    bool isNull() const { return !d; }
    explicit operator bool() const { return !isNull(); }
    /// The very same error object, not merely an equal one.
    bool isSameAs(const QBError &other) const { return d == other.d; }

    QString domain() const;
    qint64 code() const; ///< 0 for no error
    QVariantMap userInfo() const;
    /// Headline. An error without one gets a plain text that names domain and code.
    QString localizedDescription() const;
    /// Detail, null when there is none.
    QString localizedRecoverySuggestion() const;

    /// The server wants the password changed first.
    bool needModifyPassword() const;
    /// Remaining lock time of the account in minutes, null when not locked.
    QString lockTime() const;
    /// Who holds the document lock, null when not told.
    QString lockUser() const;

    /// The same code with the text that the message tables have for it; the given error itself when they have none.
    static QBError errorForErrorList(const QBError &error);
    /// Text of a code in "Messages", then "BackUpMessages"; null when neither has it.
    static QString messageForCode(qint64 code);

    static QString serverDomain(); ///< "com.velto"
    static QString posixDomain();
    static QString transportDomain(); ///< failures below HTTP; codes of TransportError

    static QBError withText(const QString &domain, qint64 code, const QString &description,
                            const QString &recoverySuggestion = {});

    // Factories: QBErrorFactories.cpp, one per condition of the client.
    static QBError errorWithPOSIXCode(int code);
    static QBError errorForForbiden();
    static QBError errorForOperationCancel();
    static QBError errorForNetDown();
    static QBError errorForNetBreak();
    static QBError errorForNetDownWhenDownload();
    static QBError errorForPermissionDeny();
    static QBError errorForDownload();
    static QBError errorForDownload(const QBError &error);
    static QBError errorForVirtualPath();
    static QBError errorForInvalidPath();
    static QBError errorForFileNameTooLong();
    static QBError errorForFilePathTooLong();
    static QBError errorForFileNameTooLongAlert();
    static QBError errorForFilePathTooLongLink();
    static QBError errorForFileNameTooLongLink();
    static QBError errorForDownloadInvalidPathName(const QString &path);
    static QBError errorForUploadInvalidPathName(const QString &path);
    static QBError errorForBadPermissionsName(const QString &folder);
    static QBError errorForDeleteBadPermissionsName(const QString &folder);
    static QBError errorForDownloadBadPermissionsName(const QString &folder);
    static QBError errorForInvalidName();
    static QBError errorForAddFavoriteToVirtualEntry(const QString &folder);
    static QBError errorForDisableClient();
    static QBError errorForDeleteFileOutbox();
    static QBError errorForRanameFileOutbox();
    static QBError errorForMoveFileOutbox();
    static QBError errorForOperateUploadfileForbiden();
    static QBError errorForUploadUserFrozen();
    static QBError errorForUploadDocFrozen();
    static QBError errorForRenameUserFrozen();
    static QBError errorForRenameDocFrozen();
    static QBError errorForRenameDocForbidden();
    static QBError errorForMoveUserFrozen();
    static QBError errorForMoveDocFrozen();
    static QBError errorForCreateUserFrozen();
    static QBError errorForCreateDocFrozen();
    static QBError errorForLockRestoreFile(const QString &lockUser);
    static QBError errorForLockRenameFile(const QString &file, const QString &lockUser);
    static QBError errorForLockRemoveFile(const QString &file, const QString &lockUser);
    static QBError errorForLockMoveFile(const QString &file, const QString &lockUser);
    static QBError errForRenameFileTypeForbidden(const QString &file);
    static QBError errForUploadDocTypeBanned(const QString &file);
    static QBError errorForUploadDocSizeLimit(const QString &file, const QString &size);
    static QBError errorForUserNotAuthenticateUpload();
    static QBError errForCreateDocNotAuthenticateUpload();
    static QBError errorForUserNotAuthenticateRename();
    static QBError errorForCreateDocNotAuthenticateRename();
    static QBError errorForUserNotAuthenticateCreate();
    static QBError errorForCreateDocNotAuthenticateCreate();
    static QBError errForUserNotAuthenticateMove();
    static QBError errorForCreateDocNotAuthenticateMove();

private:
    struct Data;
    std::shared_ptr<const Data> d;
};

/// User-information keys of QBError.
namespace QBErrorKeys
{
inline QString needModifyPassword()
{
    return QStringLiteral("NSErrorNeedModifyPassword");
}
inline QString lockTime()
{
    return QStringLiteral("lockTime");
}
inline QString lockUser()
{
    return QStringLiteral("lockUser");
}
inline QString localizedDescription()
{
    return QStringLiteral("NSLocalizedDescription");
}
inline QString localizedRecoverySuggestion()
{
    return QStringLiteral("NSLocalizedRecoverySuggestion");
}
} // namespace QBErrorKeys
