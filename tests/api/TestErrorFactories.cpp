#include "api/QBError.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Each condition of the client with its code and texts; without translations a text is its key.
class TestErrorFactories : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pairsCodeAndText()
    {
        const QString a = u"a"_s;
        const QString b = u"b"_s;
        const std::tuple<QBError, qint64, QString> conditions[] = {
            {QBError::errorForPermissionDeny(), 9999, u"您对选中的文件没有修改权限"_s},
            {QBError::errorForDownload(), 9999, u"无法执行下载操作"_s},
            {QBError::errorForFileNameTooLong(), 9999, u"0x01000001"_s},
            {QBError::errorForFilePathTooLong(), 9999, u"0x01000002"_s},
            {QBError::errorForAddFavoriteToVirtualEntry(a), 9999, u"无法执行收藏操作，您对文件夹\"a\"没有显示权限"_s},
            {QBError::errorForDisableClient(), 9999, u"管理员已禁止此类客户端登陆"_s},
            {QBError::errorForDeleteFileOutbox(), 403155, u"无法执行删除操作，您没有对发送文件箱目录的操作权限。"_s},
            {QBError::errorForRanameFileOutbox(), 403155, u"无法执行重命名操作，您没有对发送文件箱目录的操作权限。"_s},
            {QBError::errorForMoveFileOutbox(), 403155, u"无法执行移动操作，您没有对发送文件箱目录的操作权限。"_s},
            {QBError::errorForOperateUploadfileForbiden(), 9999, u"无法执行此操作，文件正在上传。"_s},
            {QBError::errorForUploadUserFrozen(), 403171, u"无法执行上传操作，您的账号已被冻结"_s},
            {QBError::errorForUploadDocFrozen(), 403172, u"无法执行上传操作，该文档已被冻结"_s},
            {QBError::errorForRenameUserFrozen(), 403171, u"无法执行重命名操作，您的账号已被冻结"_s},
            {QBError::errorForRenameDocFrozen(), 403172, u"无法执行重命名操作，该文档已冻结"_s},
            {QBError::errorForRenameDocForbidden(), 403172, u"无法执行重命名操作，操作的对象类型不正确"_s},
            {QBError::errorForMoveUserFrozen(), 403171, u"无法执行移动操作，您的账号已被冻结"_s},
            {QBError::errorForMoveDocFrozen(), 403172, u"无法执行移动操作，该文档已被冻结"_s},
            {QBError::errorForCreateUserFrozen(), 403171, u"无法执行新建操作，您的账号已被冻结"_s},
            {QBError::errorForCreateDocFrozen(), 403172, u"无法执行新建操作，该文档已被冻结"_s},
            {QBError::errorForLockRestoreFile(a), 403031, u"无法执行还原操作，当前文件已被 a 锁定"_s},
            {QBError::errorForLockRenameFile(a, b), 403031, u"无法执行重命名操作，文件 “<a>” 已被 <b> 锁定"_s},
            {QBError::errorForLockRemoveFile(a, b), 403031, u"无法执行删除操作，文件 “<a>” 已被 <b> 锁定"_s},
            {QBError::errorForLockMoveFile(a, b), 403176, u"无法执行移动操作，文件 “<a>” 已被 <b> 锁定"_s},
            {QBError::errForRenameFileTypeForbidden(a), 403182, u"重命名失败，文件 “a” 的格式已被管理员禁用"_s},
            {QBError::errorForUserNotAuthenticateUpload(), 403179, u"您未完成实名认证，无法执行上传操作。"_s},
            {QBError::errForCreateDocNotAuthenticateUpload(), 403180,
             u"该文档的创建者未完成实名认证，无法在其文档下执行上传操作。"_s},
            {QBError::errorForUserNotAuthenticateRename(), 403179, u"您未完成实名认证，无法执行重名操作。"_s},
            {QBError::errorForCreateDocNotAuthenticateRename(), 403180,
             u"该文档的创建者未完成实名认证，无法在其文档下执行重命名操作。"_s},
            {QBError::errorForUserNotAuthenticateCreate(), 403179, u"您未完成实名认证，无法执行新建操作。"_s},
            {QBError::errorForCreateDocNotAuthenticateCreate(), 403180,
             u"该文档的创建者未完成实名认证，无法在其文档下执行新建操作。"_s},
            {QBError::errForUserNotAuthenticateMove(), 403179, u"您未完成实名认证，无法执行移动操作。"_s},
            {QBError::errorForCreateDocNotAuthenticateMove(), 403180,
             u"该文档的创建者未完成实名认证，无法在其文档下执行移动操作。"_s},
        };
        for (const auto &[error, code, description] : conditions) {
            QCOMPARE(error.domain(), QBError::posixDomain());
            QCOMPARE(error.localizedDescription(), description);
            QCOMPARE(error.code(), code);
            QVERIFY(error.localizedRecoverySuggestion().isNull());
        }
    }

    void addsASuggestion()
    {
        const QString a = u"a"_s;
        const QString b = u"b"_s;
        const std::tuple<QBError, qint64, QString, QString> conditions[] = {
            {QBError::errorForNetDown(), 9999, u"您的客户端已离线，无法上传文档。"_s, u"请检查网络状态后重试"_s},
            {QBError::errorForNetBreak(), 9999, u"您的客户端已离线。"_s, u"请检查网络状态后重试"_s},
            {QBError::errorForNetDownWhenDownload(), 9999, u"您的客户端已离线，无法下载文档。"_s,
             u"请检查网络状态后重试"_s},
            {QBError::errorForVirtualPath(), 9999, u"文档创建失败。"_s, u"您不能在此位置上传文档"_s},
            {QBError::errorForInvalidPath(), 9999, u"文档创建失败。"_s, u"目标文件夹不存在，可能其所在路径发生变更"_s},
            {QBError::errorForFileNameTooLongAlert(), 9999, u"无法执行重命名操作"_s, u"文件名不能超过255个字符"_s},
            {QBError::errorForFilePathTooLongLink(), 9999, u"打开SharedLink失败"_s, u"文件名或路径过长"_s},
            {QBError::errorForFileNameTooLongLink(), 9999, u"打开SharedLink失败"_s, u"文件名过长"_s},
            {QBError::errorForDownloadInvalidPathName(a), 9999, u"无法执行下载操作"_s,
             u"路径\"a\"不存在，可能其所在路径发生变更"_s},
            {QBError::errorForUploadInvalidPathName(a), 9999, u"无法执行上传操作"_s,
             u"路径\"a\"不存在，可能其所在路径发生变更"_s},
            {QBError::errorForBadPermissionsName(a), 403002, u"无法执行上传操作"_s,
             u"您对目标文件夹\"a\"没有新建权限"_s},
            {QBError::errorForDeleteBadPermissionsName(a), 403002, u"无法执行删除操作"_s,
             u"您对目标文件夹\"a\"没有删除权限"_s},
            {QBError::errorForDownloadBadPermissionsName(a), 403002, u"无法执行下载操作"_s,
             u"您对目标文件夹\"a\"没有下载权限"_s},
            {QBError::errorForInvalidName(), 400012, u"无法执行上传操作"_s,
             u"文档名称不能包含下列任何字符：\\ / : * ? \" < > |"_s},
            {QBError::errForUploadDocTypeBanned(a), 403181, u"无法执行上传操作"_s, u"文件 “a” 的格式已被禁止上传"_s},
            {QBError::errorForUploadDocSizeLimit(a, b), 403070, u"无法执行上传操作"_s,
             u"文件 “a” 已大于b文件大小的限制"_s},
        };
        for (const auto &[error, code, description, suggestion] : conditions) {
            QCOMPARE(error.domain(), QBError::posixDomain());
            QCOMPARE(error.localizedDescription(), description);
            QCOMPARE(error.localizedRecoverySuggestion(), suggestion);
            QCOMPARE(error.code(), code);
        }
    }
};

REGISTER_TEST(TestErrorFactories)
#include "TestErrorFactories.moc"
