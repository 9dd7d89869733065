#include "api/QBError.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

using E = QBError;

struct Condition {
    QBError error;
    qint64 code;
    QString text;
    QString suggestion = {};
};

const QString a = u"a"_s;
const QString b = u"b"_s;

QList<Condition> ofTheClient()
{
    return {
        {E::errorForNetDown(), 9999, u"您的客户端已离线，无法上传文档。"_s, u"请检查网络状态后重试"_s},
        {E::errorForNetBreak(), 9999, u"您的客户端已离线。"_s, u"请检查网络状态后重试"_s},
        {E::errorForNetDownWhenDownload(), 9999, u"您的客户端已离线，无法下载文档。"_s, u"请检查网络状态后重试"_s},
        {E::errorForPermissionDeny(), 9999, u"您对选中的文件没有修改权限"_s},
        {E::errorForDownload(), 9999, u"无法执行下载操作"_s},
        {E::errorForVirtualPath(), 9999, u"文档创建失败。"_s, u"您不能在此位置上传文档"_s},
        {E::errorForInvalidPath(), 9999, u"文档创建失败。"_s, u"目标文件夹不存在，可能其所在路径发生变更"_s},
        {E::errorForFileNameTooLong(), 9999, u"0x01000001"_s},
        {E::errorForFilePathTooLong(), 9999, u"0x01000002"_s},
        {E::errorForFileNameTooLongAlert(), 9999, u"无法执行重命名操作"_s, u"文件名不能超过255个字符"_s},
        {E::errorForFilePathTooLongLink(), 9999, u"打开SharedLink失败"_s, u"文件名或路径过长"_s},
        {E::errorForFileNameTooLongLink(), 9999, u"打开SharedLink失败"_s, u"文件名过长"_s},
        {E::errorForDownloadInvalidPathName(a), 9999, u"无法执行下载操作"_s,
         u"路径\"a\"不存在，可能其所在路径发生变更"_s},
        {E::errorForUploadInvalidPathName(a), 9999, u"无法执行上传操作"_s,
         u"路径\"a\"不存在，可能其所在路径发生变更"_s},
        {E::errorForAddFavoriteToVirtualEntry(a), 9999, u"无法执行收藏操作，您对文件夹\"a\"没有显示权限"_s},
        {E::errorForDisableClient(), 9999, u"管理员已禁止此类客户端登陆"_s},
        {E::errorForOperateUploadfileForbiden(), 9999, u"无法执行此操作，文件正在上传。"_s},
    };
}

QList<Condition> frozenOrLocked()
{
    return {
        {E::errorForDeleteFileOutbox(), 403155, u"无法执行删除操作，您没有对发送文件箱目录的操作权限。"_s},
        {E::errorForRanameFileOutbox(), 403155, u"无法执行重命名操作，您没有对发送文件箱目录的操作权限。"_s},
        {E::errorForMoveFileOutbox(), 403155, u"无法执行移动操作，您没有对发送文件箱目录的操作权限。"_s},
        {E::errorForUploadUserFrozen(), 403171, u"无法执行上传操作，您的账号已被冻结"_s},
        {E::errorForUploadDocFrozen(), 403172, u"无法执行上传操作，该文档已被冻结"_s},
        {E::errorForRenameUserFrozen(), 403171, u"无法执行重命名操作，您的账号已被冻结"_s},
        {E::errorForRenameDocFrozen(), 403172, u"无法执行重命名操作，该文档已冻结"_s},
        {E::errorForRenameDocForbidden(), 403172, u"无法执行重命名操作，操作的对象类型不正确"_s},
        {E::errorForMoveUserFrozen(), 403171, u"无法执行移动操作，您的账号已被冻结"_s},
        {E::errorForMoveDocFrozen(), 403172, u"无法执行移动操作，该文档已被冻结"_s},
        {E::errorForCreateUserFrozen(), 403171, u"无法执行新建操作，您的账号已被冻结"_s},
        {E::errorForCreateDocFrozen(), 403172, u"无法执行新建操作，该文档已被冻结"_s},
        {E::errorForLockRestoreFile(a), 403031, u"无法执行还原操作，当前文件已被 a 锁定"_s},
        {E::errorForLockRenameFile(a, b), 403031, u"无法执行重命名操作，文件 “<a>” 已被 <b> 锁定"_s},
        {E::errorForLockRemoveFile(a, b), 403031, u"无法执行删除操作，文件 “<a>” 已被 <b> 锁定"_s},
        {E::errorForLockMoveFile(a, b), 403176, u"无法执行移动操作，文件 “<a>” 已被 <b> 锁定"_s},
    };
}

QList<Condition> forbiddenOrUnproven()
{
    return {
        {E::errorForBadPermissionsName(a), 403002, u"无法执行上传操作"_s, u"您对目标文件夹\"a\"没有新建权限"_s},
        {E::errorForDeleteBadPermissionsName(a), 403002, u"无法执行删除操作"_s, u"您对目标文件夹\"a\"没有删除权限"_s},
        {E::errorForDownloadBadPermissionsName(a), 403002, u"无法执行下载操作"_s, u"您对目标文件夹\"a\"没有下载权限"_s},
        {E::errorForInvalidName(), 400012, u"无法执行上传操作"_s,
         u"文档名称不能包含下列任何字符：\\ / : * ? \" < > |"_s},
        {E::errForRenameFileTypeForbidden(a), 403182, u"重命名失败，文件 “a” 的格式已被管理员禁用"_s},
        {E::errForUploadDocTypeBanned(a), 403181, u"无法执行上传操作"_s, u"文件 “a” 的格式已被禁止上传"_s},
        {E::errorForUploadDocSizeLimit(a, b), 403070, u"无法执行上传操作"_s, u"文件 “a” 已大于b文件大小的限制"_s},
        {E::errorForUserNotAuthenticateUpload(), 403179, u"您未完成实名认证，无法执行上传操作。"_s},
        {E::errForCreateDocNotAuthenticateUpload(), 403180,
         u"该文档的创建者未完成实名认证，无法在其文档下执行上传操作。"_s},
        {E::errorForUserNotAuthenticateRename(), 403179, u"您未完成实名认证，无法执行重名操作。"_s},
        {E::errorForCreateDocNotAuthenticateRename(), 403180,
         u"该文档的创建者未完成实名认证，无法在其文档下执行重命名操作。"_s},
        {E::errorForUserNotAuthenticateCreate(), 403179, u"您未完成实名认证，无法执行新建操作。"_s},
        {E::errorForCreateDocNotAuthenticateCreate(), 403180,
         u"该文档的创建者未完成实名认证，无法在其文档下执行新建操作。"_s},
        {E::errForUserNotAuthenticateMove(), 403179, u"您未完成实名认证，无法执行移动操作。"_s},
        {E::errorForCreateDocNotAuthenticateMove(), 403180,
         u"该文档的创建者未完成实名认证，无法在其文档下执行移动操作。"_s},
    };
}

} // namespace

/// Each condition of the client with its code and texts; without translations a text is its key.
class TestErrorFactories : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pairsCodeAndTexts()
    {
        for (const Condition &condition : ofTheClient() + frozenOrLocked() + forbiddenOrUnproven()) {
            QCOMPARE(condition.error.localizedDescription(), condition.text);
            QCOMPARE(condition.error.localizedRecoverySuggestion(), condition.suggestion);
            QCOMPARE(condition.error.localizedRecoverySuggestion().isNull(), condition.suggestion.isNull());
            QCOMPARE(condition.error.code(), condition.code);
            QCOMPARE(condition.error.domain(), QBError::posixDomain());
        }
    }
};

REGISTER_TEST(TestErrorFactories)
#include "TestErrorFactories.moc"
