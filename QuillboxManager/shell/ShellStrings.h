#pragma once

#include <QString>
#include <QStringList>

/// Fixed names of the shell, each written here once: identifiers, resources, paths, keys of replies and localized
/// texts.
namespace ShellStrings
{

#define QUILLBOX_TEXT(name, text)                                                                                      \
    inline QString name()                                                                                              \
    {                                                                                                                  \
        return QStringLiteral(text);                                                                                   \
    }

// The companion.
QUILLBOX_TEXT(serviceIdentifier, "com.velto.FUSEService")
QUILLBOX_TEXT(serviceResource, "FUSEService")
QUILLBOX_TEXT(serviceResourceType, "app")
QUILLBOX_TEXT(serviceExecutable, "Contents/MacOS/FUSEService")
QUILLBOX_TEXT(serviceSocket, "search_socket")

// The volume in the file manager.
QUILLBOX_TEXT(sidebarName, "Quillbox")
QUILLBOX_TEXT(toolTip, "Quillbox")

// First run.
QUILLBOX_TEXT(finderExtension, "QBFinderSync.appex")
QUILLBOX_TEXT(extensionToolAdd, "-a")
QUILLBOX_TEXT(brandingFirst, "first")
QUILLBOX_TEXT(brandingFirstDone, "yes")

// Fonts.
QUILLBOX_TEXT(fontFile, "SourceHanSansSC-Normal.otf")
QUILLBOX_TEXT(fontResource, "SourceHanSansSC/SourceHanSansSC-Normal.otf")
QUILLBOX_TEXT(fontScript, "installFonts")

/// Names under which the family is listed: the font itself, its family, and the same design under its other maker's
/// name.
inline QStringList fontNames()
{
    return {QStringLiteral("SourceHanSansSC-Normal"), QStringLiteral("Source Han Sans SC"),
            QStringLiteral("Noto Sans CJK SC")};
}

// The file-system driver.
QUILLBOX_TEXT(driverCorePackage, "com.github.osxfuse.pkg.Core")
QUILLBOX_TEXT(driverPanePackage, "com.github.osxfuse.pkg.PrefPane")
QUILLBOX_TEXT(driverVersion, "3.10.4")
QUILLBOX_TEXT(driverImage, "osxfuse-3.10.4")
QUILLBOX_TEXT(driverImageType, "dmg")
QUILLBOX_TEXT(driverVolume, "FUSE for macOS")
QUILLBOX_TEXT(driverCheckScript, "checkFuse")
QUILLBOX_TEXT(driverInstallScript, "autoInstallFuse")
QUILLBOX_TEXT(systemInstaller, "com.apple.installer")

// Scripts.
QUILLBOX_TEXT(shellScriptType, "sh")
QUILLBOX_TEXT(appleScriptType, "scpt")
QUILLBOX_TEXT(relaunchFinderScript, "relanuchFinder")
QUILLBOX_TEXT(reopenScript, "reopenQuillbox")
QUILLBOX_TEXT(bash, "/bin/bash")
QUILLBOX_TEXT(sh, "/bin/sh")

// Keys of server replies.
QUILLBOX_TEXT(autoPopUserAgreementKey, "autoPopUserAgreement")
QUILLBOX_TEXT(agreementTextKey, "agreementText")
QUILLBOX_TEXT(agreedToTermsOfUseKey, "agreedtotermsofuse")
QUILLBOX_TEXT(userTypeKey, "usertype")
QUILLBOX_TEXT(passwordControlKey, "pwdcontrol")
QUILLBOX_TEXT(serverVersionKey, "server_version")
QUILLBOX_TEXT(needQuickStartKey, "needquickstart")
QUILLBOX_TEXT(httpsKey, "https")
QUILLBOX_TEXT(portKey, "port")

// Keys of localized texts.
QUILLBOX_TEXT(menuTable, "MainMenu")
QUILLBOX_TEXT(installDriverText, "请安装云盘所需依赖库FUSE %@")
QUILLBOX_TEXT(installNowTitle, "现在安装")
QUILLBOX_TEXT(notNowTitle, "暂不")
QUILLBOX_TEXT(forceQuitTitle, "强制退出")
QUILLBOX_TEXT(cancelQuitTitle, "取消退出")
QUILLBOX_TEXT(filesOpenText, "您有在Quillbox中打开的文件未关闭")
QUILLBOX_TEXT(filesOpenDetail, "强制退出可能导致未保存的修改失效")
QUILLBOX_TEXT(changePasswordTitle, "修改密码")
QUILLBOX_TEXT(favoritesTitle, "常用")
QUILLBOX_TEXT(searchTitle, "查找定位")
QUILLBOX_TEXT(searchPlaceholder, "请输入SharedLink地址或HTTPLink地址")
QUILLBOX_TEXT(passwordControlText, "pwdcontrolInfo")
QUILLBOX_TEXT(okTitle, "OK")
QUILLBOX_TEXT(confirmTitle, "确定")
QUILLBOX_TEXT(quickStartURL, "QuickStartURL")
QUILLBOX_TEXT(onlineHelp, "OnlineHelp")
QUILLBOX_TEXT(onlineTrain, "OnlineTrain")
QUILLBOX_TEXT(registrationPage, "https://help.quillbox.example/registration")

#undef QUILLBOX_TEXT

} // namespace ShellStrings
