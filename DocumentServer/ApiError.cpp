#include "ApiError.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr std::array standardTexts = std::to_array<std::pair<int, const char *>>({
    {NotJson, "The request is not a JSON object."},
    {IllegalParameter, "A parameter is missing or not acceptable."},
    {NoUpdateInformation, "No update information is available."},
    {IllegalName, "The name is not acceptable."},
    {QuotaExceeded, "The quota is exceeded."},
    {NoPermission, "There is no permission to do this."},
    {Locked, "The file is locked by another user."},
    {NameTaken, "The name is taken."},
    {SizeLimit, "The file is too large."},
    {OutboxRefused, "The outbox cannot be changed."},
    {UserFrozen, "The user is frozen."},
    {DocumentFrozen, "The document is frozen."},
    {ChildLocked, "A file in the folder is locked by another user."},
    {MoveLocked, "The file is locked by another user."},
    {UserNotAuthenticated, "The identity of the user is not confirmed."},
    {CreatorNotAuthenticated, "The identity of the creator is not confirmed."},
    {TypeBanned, "Files of this type are not allowed."},
    {RenameTypeBanned, "Files cannot be renamed to this type."},
    {DocumentGone, "The file or folder does not exist."},
    {TokenInvalid, "The session is not valid or has expired."},
    {WrongPassword, "The account or the password is wrong."},
    {AccountDisabled, "The account is disabled."},
    {TicketRefused, "The single sign-on was refused."},
    {ClientDisabled, "The administrator does not allow this kind of client."},
    {InitialPassword, "The initial password must be changed."},
    {PasswordExpired, "The password has expired and must be changed."},
    {PasswordTooWeak, "The password does not meet the policy."},
    {AccountLocked, "The account is locked after too many wrong attempts."},
    {PictureCodeMissing, "A picture code is required."},
    {PasswordControlled, "The administrator controls the password of this account."},
    {PictureCodeWrong, "The picture code is wrong or has expired."},
    {PasswordUnchanged, "The new password equals the old one."},
    {SecondFactorRequired, "A verification code is required."},
    {SignatureWrong, "The signature of the request is wrong."},
    {WrongCode, "The verification code is wrong or has expired."},
    {WrongOneTimePassword, "The one-time password is wrong."},
    {NothingBound, "The account has nothing bound that a code could be checked with."},
    {SentTooRecently, "The interval between two verification codes has not passed."},
    {SecondFactorOff, "Verification codes are switched off."},
    {SendingRefused, "The verification code could not be sent."},
    {UnknownMethod, "There is no such method."},
    {UnknownSection, "There is no such section."},
    {SmsGatewayDown, "The SMS gateway cannot be reached."},
    {MailServerDown, "The mail server cannot be reached."},
    {MethodNotAllowed, "Only POST is understood here."},
    {TooLarge, "The request is too large."},
    {InternalError, "The server failed to handle the request."},
});

QString standardText(int code)
{
    for (const auto &[known, text] : standardTexts)
        if (known == code)
            return QString::fromLatin1(text);
    return u"Error %1."_s.arg(code);
}
} // namespace

int httpStatus(const ApiError &error)
{
    if (error.httpStatus != 0)
        return error.httpStatus;
    const int status = error.code / 1000;
    return status >= 400 && status <= 599 ? status : 500;
}

QJsonObject errorReply(const ApiError &error)
{
    QJsonObject reply{{u"errcode"_s, error.code},
                      {u"errmsg"_s, error.message.isEmpty() ? standardText(error.code) : error.message},
                      {u"causemsg"_s, error.cause}};
    if (!error.detail.isEmpty())
        reply.insert(u"detail"_s, error.detail);
    return reply;
}

} // namespace documentserver
