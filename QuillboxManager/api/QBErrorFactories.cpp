#include "api/QBError.h"

#include "platform/Localization.h"

#include <QStringList>

using namespace Qt::StringLiterals;

// The errors of the client's own conditions. The Chinese texts are the keys of the translation tables, so they stand
// here exactly as the tables have them.

namespace
{

constexpr qint64 clientCondition = 9999;

/// A text of the default table, its slots filled.
QString text(const QString &key, const QStringList &arguments = {})
{
    return platform::fillPlaceholders(platform::localizedString(key), arguments);
}

/// The same out of the table of the error texts.
QString errorText(const QString &key, const QStringList &arguments = {})
{
    return platform::fillPlaceholders(platform::localizedString(key, u"QBError"_s), arguments);
}

QBError clientError(qint64 code, const QString &description, const QString &recoverySuggestion = {})
{
    return QBError::withText(QBError::posixDomain(), code, description, recoverySuggestion);
}

} // namespace

QBError QBError::errorWithPOSIXCode(int code)
{
    return QBError(posixDomain(), code);
}

QBError QBError::errorForForbiden()
{
    return errorWithPOSIXCode(1);
}

QBError QBError::errorForOperationCancel()
{
    return errorWithPOSIXCode(89);
}

QBError QBError::errorForNetDown()
{
    return clientError(clientCondition, text(u"您的客户端已离线，无法上传文档。"_s), text(u"请检查网络状态后重试"_s));
}

QBError QBError::errorForNetBreak()
{
    return clientError(clientCondition, text(u"您的客户端已离线。"_s), text(u"请检查网络状态后重试"_s));
}

QBError QBError::errorForNetDownWhenDownload()
{
    return clientError(clientCondition, text(u"您的客户端已离线，无法下载文档。"_s), text(u"请检查网络状态后重试"_s));
}

QBError QBError::errorForPermissionDeny()
{
    return clientError(clientCondition, text(u"您对选中的文件没有修改权限"_s));
}

QBError QBError::errorForDownload()
{
    return clientError(clientCondition, text(u"无法执行下载操作"_s));
}

QBError QBError::errorForDownload(const QBError &error)
{
    return clientError(clientCondition, text(u"无法执行下载操作"_s), messageForCode(error.code()));
}

QBError QBError::errorForVirtualPath()
{
    return clientError(clientCondition, text(u"文档创建失败。"_s), text(u"您不能在此位置上传文档"_s));
}

QBError QBError::errorForInvalidPath()
{
    return clientError(clientCondition, text(u"文档创建失败。"_s), text(u"目标文件夹不存在，可能其所在路径发生变更"_s));
}

QBError QBError::errorForFileNameTooLong()
{
    return clientError(clientCondition, u"0x01000001"_s);
}

QBError QBError::errorForFilePathTooLong()
{
    return clientError(clientCondition, u"0x01000002"_s);
}

QBError QBError::errorForFileNameTooLongAlert()
{
    return clientError(clientCondition, errorText(u"无法执行重命名操作"_s), errorText(u"文件名不能超过255个字符"_s));
}

QBError QBError::errorForFilePathTooLongLink()
{
    return clientError(clientCondition, errorText(u"打开SharedLink失败"_s), errorText(u"文件名或路径过长"_s));
}

QBError QBError::errorForFileNameTooLongLink()
{
    return clientError(clientCondition, errorText(u"打开SharedLink失败"_s), errorText(u"文件名过长"_s));
}

QBError QBError::errorForDownloadInvalidPathName(const QString &path)
{
    return clientError(clientCondition, text(u"无法执行下载操作"_s),
                       text(u"路径\"%@\"不存在，可能其所在路径发生变更"_s, {path}));
}

QBError QBError::errorForUploadInvalidPathName(const QString &path)
{
    return clientError(clientCondition, text(u"无法执行上传操作"_s),
                       text(u"路径\"%@\"不存在，可能其所在路径发生变更"_s, {path}));
}

QBError QBError::errorForBadPermissionsName(const QString &folder)
{
    return clientError(403002, text(u"无法执行上传操作"_s), text(u"您对目标文件夹\"%@\"没有新建权限"_s, {folder}));
}

QBError QBError::errorForDeleteBadPermissionsName(const QString &folder)
{
    return clientError(403002, text(u"无法执行删除操作"_s), text(u"您对目标文件夹\"%@\"没有删除权限"_s, {folder}));
}

QBError QBError::errorForDownloadBadPermissionsName(const QString &folder)
{
    return clientError(403002, text(u"无法执行下载操作"_s), text(u"您对目标文件夹\"%@\"没有下载权限"_s, {folder}));
}

QBError QBError::errorForInvalidName()
{
    return clientError(400012, text(u"无法执行上传操作"_s),
                       text(u"文档名称不能包含下列任何字符：\\ / : * ? \" < > |"_s));
}

QBError QBError::errorForAddFavoriteToVirtualEntry(const QString &folder)
{
    return clientError(clientCondition, text(u"无法执行收藏操作，您对文件夹\"%@\"没有显示权限"_s, {folder}));
}

QBError QBError::errorForDisableClient()
{
    return clientError(clientCondition, text(u"管理员已禁止此类客户端登陆"_s));
}

QBError QBError::errorForDeleteFileOutbox()
{
    return clientError(403155, text(u"无法执行删除操作，您没有对发送文件箱目录的操作权限。"_s));
}

QBError QBError::errorForRanameFileOutbox()
{
    return clientError(403155, text(u"无法执行重命名操作，您没有对发送文件箱目录的操作权限。"_s));
}

QBError QBError::errorForMoveFileOutbox()
{
    return clientError(403155, text(u"无法执行移动操作，您没有对发送文件箱目录的操作权限。"_s));
}

QBError QBError::errorForOperateUploadfileForbiden()
{
    return clientError(clientCondition, text(u"无法执行此操作，文件正在上传。"_s));
}

QBError QBError::errorForUploadUserFrozen()
{
    return clientError(403171, text(u"无法执行上传操作，您的账号已被冻结"_s));
}

QBError QBError::errorForUploadDocFrozen()
{
    return clientError(403172, text(u"无法执行上传操作，该文档已被冻结"_s));
}

QBError QBError::errorForRenameUserFrozen()
{
    return clientError(403171, text(u"无法执行重命名操作，您的账号已被冻结"_s));
}

QBError QBError::errorForRenameDocFrozen()
{
    return clientError(403172, text(u"无法执行重命名操作，该文档已冻结"_s));
}

QBError QBError::errorForRenameDocForbidden()
{
    return clientError(403172, text(u"无法执行重命名操作，操作的对象类型不正确"_s));
}

QBError QBError::errorForMoveUserFrozen()
{
    return clientError(403171, text(u"无法执行移动操作，您的账号已被冻结"_s));
}

QBError QBError::errorForMoveDocFrozen()
{
    return clientError(403172, text(u"无法执行移动操作，该文档已被冻结"_s));
}

QBError QBError::errorForCreateUserFrozen()
{
    return clientError(403171, text(u"无法执行新建操作，您的账号已被冻结"_s));
}

QBError QBError::errorForCreateDocFrozen()
{
    return clientError(403172, text(u"无法执行新建操作，该文档已被冻结"_s));
}

QBError QBError::errorForLockRestoreFile(const QString &lockUser)
{
    return clientError(403031, errorText(u"无法执行还原操作，当前文件已被 %@ 锁定"_s, {lockUser}));
}

QBError QBError::errorForLockRenameFile(const QString &file, const QString &lockUser)
{
    return clientError(403031, errorText(u"无法执行重命名操作，文件 “<%@>” 已被 <%@> 锁定"_s, {file, lockUser}));
}

QBError QBError::errorForLockRemoveFile(const QString &file, const QString &lockUser)
{
    return clientError(403031, errorText(u"无法执行删除操作，文件 “<%@>” 已被 <%@> 锁定"_s, {file, lockUser}));
}

QBError QBError::errorForLockMoveFile(const QString &file, const QString &lockUser)
{
    return clientError(403176, errorText(u"无法执行移动操作，文件 “<%@>” 已被 <%@> 锁定"_s, {file, lockUser}));
}

QBError QBError::errForRenameFileTypeForbidden(const QString &file)
{
    return clientError(403182, errorText(u"重命名失败，文件 “%@” 的格式已被管理员禁用"_s, {file}));
}

QBError QBError::errForUploadDocTypeBanned(const QString &file)
{
    return clientError(403181, text(u"无法执行上传操作"_s), errorText(u"文件 “%@” 的格式已被禁止上传"_s, {file}));
}

QBError QBError::errorForUploadDocSizeLimit(const QString &file, const QString &size)
{
    return clientError(403070, text(u"无法执行上传操作"_s),
                       errorText(u"文件 “%@” 已大于%@文件大小的限制"_s, {file, size}));
}

QBError QBError::errorForUserNotAuthenticateUpload()
{
    return clientError(403179, errorText(u"您未完成实名认证，无法执行上传操作。"_s));
}

QBError QBError::errForCreateDocNotAuthenticateUpload()
{
    return clientError(403180, errorText(u"该文档的创建者未完成实名认证，无法在其文档下执行上传操作。"_s));
}

QBError QBError::errorForUserNotAuthenticateRename()
{
    return clientError(403179, errorText(u"您未完成实名认证，无法执行重名操作。"_s));
}

QBError QBError::errorForCreateDocNotAuthenticateRename()
{
    return clientError(403180, errorText(u"该文档的创建者未完成实名认证，无法在其文档下执行重命名操作。"_s));
}

QBError QBError::errorForUserNotAuthenticateCreate()
{
    return clientError(403179, errorText(u"您未完成实名认证，无法执行新建操作。"_s));
}

QBError QBError::errorForCreateDocNotAuthenticateCreate()
{
    return clientError(403180, errorText(u"该文档的创建者未完成实名认证，无法在其文档下执行新建操作。"_s));
}

QBError QBError::errForUserNotAuthenticateMove()
{
    return clientError(403179, errorText(u"您未完成实名认证，无法执行移动操作。"_s));
}

QBError QBError::errorForCreateDocNotAuthenticateMove()
{
    return clientError(403180, errorText(u"该文档的创建者未完成实名认证，无法在其文档下执行移动操作。"_s));
}
