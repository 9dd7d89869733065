#pragma once

#include <QString>

/// Keys of the user defaults, each written here once. The comment names the type and the writer.
namespace PersistentKeys
{

#define QUILLBOX_KEY(name, text)                                                                                       \
    inline QString name()                                                                                              \
    {                                                                                                                  \
        return QStringLiteral(text);                                                                                   \
    }

QUILLBOX_KEY(accountName, "AccountName")                       // text, login window
QUILLBOX_KEY(encryptPassword, "EncryptPassword")               // Base64 text, login window; absent = not remembered
QUILLBOX_KEY(autoLogin, "AutoLogin")                           // integer 0 or 1, login window
QUILLBOX_KEY(serverID, "ServerID")                             // text, server settings
QUILLBOX_KEY(authportNew, "AuthportNew")                       // decimal text, server settings
QUILLBOX_KEY(thirdPartyDic, "ThirdPartyDic")                   // dictionary, last single-sign-on configuration
QUILLBOX_KEY(authbysms, "authbysms")                           // boolean, login window
QUILLBOX_KEY(authbyemail, "authbyemail")                       // boolean, login window
QUILLBOX_KEY(loginusername, "loginusername")                   // text, second-factor hand-over
QUILLBOX_KEY(loginpassword, "loginpassword")                   // text, second-factor hand-over
QUILLBOX_KEY(loginvcode, "loginvcode")                         // dictionary or absent, second-factor hand-over
QUILLBOX_KEY(oldtelnum, "oldtelnum")                           // text, second-factor hand-over
QUILLBOX_KEY(loginverifyphonenumber, "loginverifyphonenumber") // text, second-factor hand-over
QUILLBOX_KEY(loginverifytimer, "loginverifytimer")             // integer seconds, second-factor hand-over
QUILLBOX_KEY(isduplicatesended, "isduplicatesended")           // boolean, second-factor hand-over

#undef QUILLBOX_KEY

} // namespace PersistentKeys
