#include "api/QBError.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

void row(const char *name, const QBError &error, qint64 code, const QString &description,
         const QString &suggestion = {})
{
    QTest::newRow(name) << error << code << description << suggestion;
}

void addPlainConditions()
{
    row("errorForNetDown", QBError::errorForNetDown(), 9999, u"您的客户端已离线，无法上传文档。"_s,
        u"请检查网络状态后重试"_s);
    row("errorForNetBreak", QBError::errorForNetBreak(), 9999, u"您的客户端已离线。"_s, u"请检查网络状态后重试"_s);
    row("errorForNetDownWhenDownload", QBError::errorForNetDownWhenDownload(), 9999,
        u"您的客户端已离线，无法下载文档。"_s, u"请检查网络状态后重试"_s);
    row("errorForPermissionDeny", QBError::errorForPermissionDeny(), 9999, u"您对选中的文件没有修改权限"_s);
    row("errorForDownload", QBError::errorForDownload(), 9999, u"无法执行下载操作"_s);
    row("errorForVirtualPath", QBError::errorForVirtualPath(), 9999, u"文档创建失败。"_s, u"您不能在此位置上传文档"_s);
    row("errorForInvalidPath", QBError::errorForInvalidPath(), 9999, u"文档创建失败。"_s,
        u"目标文件夹不存在，可能其所在路径发生变更"_s);
    row("errorForFileNameTooLong", QBError::errorForFileNameTooLong(), 9999, u"0x01000001"_s);
    row("errorForFilePathTooLong", QBError::errorForFilePathTooLong(), 9999, u"0x01000002"_s);
    row("errorForFileNameTooLongAlert", QBError::errorForFileNameTooLongAlert(), 9999, u"无法执行重命名操作"_s,
        u"文件名不能超过255个字符"_s);
    row("errorForFilePathTooLongLink", QBError::errorForFilePathTooLongLink(), 9999, u"打开SharedLink失败"_s,
        u"文件名或路径过长"_s);
    row("errorForFileNameTooLongLink", QBError::errorForFileNameTooLongLink(), 9999, u"打开SharedLink失败"_s,
        u"文件名过长"_s);
}

void addNamesAndPlaces()
{
    row("errorForDownloadInvalidPathName", QBError::errorForDownloadInvalidPathName(u"first"_s), 9999,
        u"无法执行下载操作"_s, u"路径\"first\"不存在，可能其所在路径发生变更"_s);
    row("errorForUploadInvalidPathName", QBError::errorForUploadInvalidPathName(u"first"_s), 9999,
        u"无法执行上传操作"_s, u"路径\"first\"不存在，可能其所在路径发生变更"_s);
    row("errorForBadPermissionsName", QBError::errorForBadPermissionsName(u"first"_s), 403002, u"无法执行上传操作"_s,
        u"您对目标文件夹\"first\"没有新建权限"_s);
    row("errorForDeleteBadPermissionsName", QBError::errorForDeleteBadPermissionsName(u"first"_s), 403002,
        u"无法执行删除操作"_s, u"您对目标文件夹\"first\"没有删除权限"_s);
    row("errorForDownloadBadPermissionsName", QBError::errorForDownloadBadPermissionsName(u"first"_s), 403002,
        u"无法执行下载操作"_s, u"您对目标文件夹\"first\"没有下载权限"_s);
    row("errorForInvalidName", QBError::errorForInvalidName(), 400012, u"无法执行上传操作"_s,
        u"文档名称不能包含下列任何字符：\\ / : * ? \" < > |"_s);
    row("errorForAddFavoriteToVirtualEntry", QBError::errorForAddFavoriteToVirtualEntry(u"first"_s), 9999,
        u"无法执行收藏操作，您对文件夹\"first\"没有显示权限"_s);
    row("errorForDisableClient", QBError::errorForDisableClient(), 9999, u"管理员已禁止此类客户端登陆"_s);
    row("errorForDeleteFileOutbox", QBError::errorForDeleteFileOutbox(), 403155,
        u"无法执行删除操作，您没有对发送文件箱目录的操作权限。"_s);
    row("errorForRanameFileOutbox", QBError::errorForRanameFileOutbox(), 403155,
        u"无法执行重命名操作，您没有对发送文件箱目录的操作权限。"_s);
    row("errorForMoveFileOutbox", QBError::errorForMoveFileOutbox(), 403155,
        u"无法执行移动操作，您没有对发送文件箱目录的操作权限。"_s);
    row("errorForOperateUploadfileForbiden", QBError::errorForOperateUploadfileForbiden(), 9999,
        u"无法执行此操作，文件正在上传。"_s);
}

void addFrozenAndLocked()
{
    row("errorForUploadUserFrozen", QBError::errorForUploadUserFrozen(), 403171,
        u"无法执行上传操作，您的账号已被冻结"_s);
    row("errorForUploadDocFrozen", QBError::errorForUploadDocFrozen(), 403172, u"无法执行上传操作，该文档已被冻结"_s);
    row("errorForRenameUserFrozen", QBError::errorForRenameUserFrozen(), 403171,
        u"无法执行重命名操作，您的账号已被冻结"_s);
    row("errorForRenameDocFrozen", QBError::errorForRenameDocFrozen(), 403172, u"无法执行重命名操作，该文档已冻结"_s);
    row("errorForRenameDocForbidden", QBError::errorForRenameDocForbidden(), 403172,
        u"无法执行重命名操作，操作的对象类型不正确"_s);
    row("errorForMoveUserFrozen", QBError::errorForMoveUserFrozen(), 403171, u"无法执行移动操作，您的账号已被冻结"_s);
    row("errorForMoveDocFrozen", QBError::errorForMoveDocFrozen(), 403172, u"无法执行移动操作，该文档已被冻结"_s);
    row("errorForCreateUserFrozen", QBError::errorForCreateUserFrozen(), 403171,
        u"无法执行新建操作，您的账号已被冻结"_s);
    row("errorForCreateDocFrozen", QBError::errorForCreateDocFrozen(), 403172, u"无法执行新建操作，该文档已被冻结"_s);
    row("errorForLockRestoreFile", QBError::errorForLockRestoreFile(u"first"_s), 403031,
        u"无法执行还原操作，当前文件已被 first 锁定"_s);
    row("errorForLockRenameFile", QBError::errorForLockRenameFile(u"first"_s, u"second"_s), 403031,
        u"无法执行重命名操作，文件 “<first>” 已被 <second> 锁定"_s);
    row("errorForLockRemoveFile", QBError::errorForLockRemoveFile(u"first"_s, u"second"_s), 403031,
        u"无法执行删除操作，文件 “<first>” 已被 <second> 锁定"_s);
    row("errorForLockMoveFile", QBError::errorForLockMoveFile(u"first"_s, u"second"_s), 403176,
        u"无法执行移动操作，文件 “<first>” 已被 <second> 锁定"_s);
}

void addForbiddenAndUnproven()
{
    row("errForRenameFileTypeForbidden", QBError::errForRenameFileTypeForbidden(u"first"_s), 403182,
        u"重命名失败，文件 “first” 的格式已被管理员禁用"_s);
    row("errForUploadDocTypeBanned", QBError::errForUploadDocTypeBanned(u"first"_s), 403181, u"无法执行上传操作"_s,
        u"文件 “first” 的格式已被禁止上传"_s);
    row("errorForUploadDocSizeLimit", QBError::errorForUploadDocSizeLimit(u"first"_s, u"second"_s), 403070,
        u"无法执行上传操作"_s, u"文件 “first” 已大于second文件大小的限制"_s);
    row("errorForUserNotAuthenticateUpload", QBError::errorForUserNotAuthenticateUpload(), 403179,
        u"您未完成实名认证，无法执行上传操作。"_s);
    row("errForCreateDocNotAuthenticateUpload", QBError::errForCreateDocNotAuthenticateUpload(), 403180,
        u"该文档的创建者未完成实名认证，无法在其文档下执行上传操作。"_s);
    row("errorForUserNotAuthenticateRename", QBError::errorForUserNotAuthenticateRename(), 403179,
        u"您未完成实名认证，无法执行重名操作。"_s);
    row("errorForCreateDocNotAuthenticateRename", QBError::errorForCreateDocNotAuthenticateRename(), 403180,
        u"该文档的创建者未完成实名认证，无法在其文档下执行重命名操作。"_s);
    row("errorForUserNotAuthenticateCreate", QBError::errorForUserNotAuthenticateCreate(), 403179,
        u"您未完成实名认证，无法执行新建操作。"_s);
    row("errorForCreateDocNotAuthenticateCreate", QBError::errorForCreateDocNotAuthenticateCreate(), 403180,
        u"该文档的创建者未完成实名认证，无法在其文档下执行新建操作。"_s);
    row("errForUserNotAuthenticateMove", QBError::errForUserNotAuthenticateMove(), 403179,
        u"您未完成实名认证，无法执行移动操作。"_s);
    row("errorForCreateDocNotAuthenticateMove", QBError::errorForCreateDocNotAuthenticateMove(), 403180,
        u"该文档的创建者未完成实名认证，无法在其文档下执行移动操作。"_s);
}

} // namespace

/// Each condition of the client with its code and texts; without translations a text is its key.
class TestErrorFactories : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pairsCodeAndTexts_data();
    void pairsCodeAndTexts();
};

void TestErrorFactories::pairsCodeAndTexts_data()
{
    QTest::addColumn<QBError>("error");
    QTest::addColumn<qint64>("code");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("suggestion");
    addPlainConditions();
    addNamesAndPlaces();
    addFrozenAndLocked();
    addForbiddenAndUnproven();
}

void TestErrorFactories::pairsCodeAndTexts()
{
    QFETCH(QBError, error);
    QCOMPARE(error.domain(), QBError::posixDomain());
    QTEST(error.code(), "code");
    QTEST(error.localizedDescription(), "description");
    QTEST(error.localizedRecoverySuggestion(), "suggestion");
    QFETCH(QString, suggestion);
    QCOMPARE(error.localizedRecoverySuggestion().isNull(), suggestion.isNull());
}

REGISTER_TEST(TestErrorFactories)
#include "TestErrorFactories.moc"
