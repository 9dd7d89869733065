#pragma once

namespace documentserver
{

/// The codes of the API's error replies. The first three digits are the HTTP status of the reply.
enum ErrorCode : int {
    NotJson = 400001,                 ///< the body is not one JSON object
    IllegalParameter = 400002,        ///< a required value is missing or has the wrong type
    NoUpdateInformation = 400003,     ///< nothing is known about updates for this platform
    IllegalName = 400012,             ///< the name of a file or folder is not acceptable
    TokenInvalid = 401001,            ///< no token, an unknown one or an expired one
    WrongPassword = 401003,           ///< no such account, or a wrong password: never told apart
    AccountDisabled = 401004,         ///< the administrator disabled the account
    TicketRefused = 401009,           ///< the single-sign-on ticket or its authenticator is not known
    ClientDisabled = 401011,          ///< the administrator does not allow this kind of client
    InitialPassword = 401012,         ///< the initial password must be changed first
    PasswordExpired = 401013,         ///< the password is too old and must be changed first
    PasswordTooWeak = 401017,         ///< the password does not meet the policy
    AccountLocked = 401020,           ///< too many wrong attempts; detail.remainlockTime holds the minutes as text
    PictureCodeMissing = 401021,      ///< this attempt needs a picture code
    PasswordControlled = 401026,      ///< the administrator controls the password of this account
    PictureCodeWrong = 401031,        ///< wrong, used or expired picture code
    PasswordUnchanged = 401035,       ///< the new password equals the old one
    SecondFactorRequired = 401037,    ///< ask for a code with sendauthvcode and sign in again with it
    SignatureWrong = 401038,          ///< the signature of the password change does not fit its body
    WrongCode = 401039,               ///< wrong or expired code from SMS or e-mail
    WrongOneTimePassword = 401056,    ///< wrong, missing or already used one-time password
    NothingBound = 401058,            ///< the account has no phone number, address or secret for the second factor
    SentTooRecently = 401059,         ///< the interval since the last code, which is no longer valid, has not passed
    SecondFactorOff = 401064,         ///< a code was asked for, but the server sends none
    QuotaExceeded = 403001,           ///< the entry document has no room for so many bytes
    NoPermission = 403002,            ///< the user may not do this here
    Locked = 403031,                  ///< another user holds the lock; causemsg names him
    NameTaken = 403039,               ///< there is a file or folder of that name already
    SendingRefused = 403058,          ///< the gateway refused to send the code
    SizeLimit = 403070,               ///< the file is larger than the administrator allows
    OutboxRefused = 403155,           ///< the outbox cannot be changed
    UserFrozen = 403171,              ///< the administrator froze the user
    DocumentFrozen = 403172,          ///< the administrator froze the document
    ChildLocked = 403175,             ///< another user holds the lock of a document inside the folder
    MoveLocked = 403176,              ///< another user holds the lock of the document to be moved
    UserNotAuthenticated = 403179,    ///< the user's identity is not confirmed
    CreatorNotAuthenticated = 403180, ///< the identity of the document's creator is not confirmed
    TypeBanned = 403181,              ///< files of this type may not be uploaded
    RenameTypeBanned = 403182,        ///< files may not be renamed to this type
    UnknownMethod = 404001,           ///< no such service or method
    UnknownSection = 404002,          ///< no such configuration section
    DocumentGone = 404006,            ///< there is no such file or folder, or none any more
    SmsGatewayDown = 404029,          ///< the SMS gateway is not reachable
    MailServerDown = 404031,          ///< the mail server is not reachable
    MethodNotAllowed = 405001,        ///< an HTTP method other than POST
    TooLarge = 413001,                ///< the body is larger than the server takes
    InternalError = 500001,           ///< the server failed; nothing was changed
};

} // namespace documentserver
