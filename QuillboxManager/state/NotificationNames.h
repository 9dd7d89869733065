#pragma once

#include <QString>

/// Names of the notifications inside this process (platform::NotificationCenter). The comment tells who posts.
namespace NotificationNames
{

#define QUILLBOX_NAME(name, text)                                                                                      \
    inline QString name()                                                                                              \
    {                                                                                                                  \
        return QStringLiteral(text);                                                                                   \
    }

// Sign-in and its neighbours; no object and no user information where none is named.
QUILLBOX_NAME(loginSuccess, "NotificationLoginSuccess")                       // login, verification, single sign-on
QUILLBOX_NAME(wantServerSettingWindow, "NotificationWantServerSettingWindow") // login window's server button
QUILLBOX_NAME(wantForgetPWDWindow, "NotificationWantForgetPWDWindow")         // login window's forgotten password
QUILLBOX_NAME(wantLoginVerifyWindow, "NotificationWantLoginVerifyWindow")     // login window, second factor
QUILLBOX_NAME(loginVerifyWantLoginWindow, "NotificationLoginVerifyWantLoginWindow") // verification window closing
QUILLBOX_NAME(closeLoginVerifyWindow, "NotificationCloseLoginVerifyWindow")         // change-password window
QUILLBOX_NAME(wantLoginWindow, "NotificationWantLoginWindow") // server settings; reset page: object {"from": "resetWC"}
QUILLBOX_NAME(closeThirdLoginWindowShowLoginWindow, "NotificationCloseThirdLoginWindowShowLoginWindow") // web sign-in
QUILLBOX_NAME(userProtocolShowVolume, "NotificationUserProtocolShowVolume") // agreement window's open button

// Focus of the login window's fields. Object: the field; user information {"tag": integer}.
QUILLBOX_NAME(userActive, "NotificationUserActive")               // plain field gained focus
QUILLBOX_NAME(userDeactive, "NotificationUserDeactive")           // plain field lost it
QUILLBOX_NAME(passwordsActive, "NotificationPasswordsActive")     // secure field gained focus
QUILLBOX_NAME(passwordsDeactive, "NotificationPasswordsDeactive") // secure field lost it

// Focus of the server window's fields. Object: the field; user information {"Active": tag} or {"Deactive": tag}, where
// the tag is 1 for the address and 2 for the port.
QUILLBOX_NAME(serverSettingTextFieldActive, "NotificationQBServerSettingTextFieldActive")
QUILLBOX_NAME(serverSettingTextFieldDeactive, "NotificationQBServerSettingTextFieldDeactive")

// The agreement's check box.
QUILLBOX_NAME(alreadyReadUserProtocol, "NotificationAlreadyReadUserProcotol") // ticked
QUILLBOX_NAME(notReadUserProtocol, "NotificationNotReadUserProcotol")         // cleared

} // namespace NotificationNames

/// Names of the notifications between the processes of one user (platform::DistributedNotificationCenter).
namespace DistributedNotificationNames
{

QUILLBOX_NAME(registerServerSucess, "NotificationRegisterServerSucess")       // companion: its socket is ready
QUILLBOX_NAME(stopQuillboxFuseService, "NotificationStopQuillboxFuseService") // to the companion: unmount and end
QUILLBOX_NAME(callTransferWindow, "NotificationCallTransferWindow")           // to the companion: show transfers
QUILLBOX_NAME(openMyFavorites, "NotificationOpenMyFavorites")                 // to the companion
QUILLBOX_NAME(showSearchWindow, "NotificationShowSearchWindow")               // to the companion: content search
QUILLBOX_NAME(showDirctUploadPanel, "NotificationShowDirctUploadPanel")       // to the companion: direct upload

#undef QUILLBOX_NAME

} // namespace DistributedNotificationNames
