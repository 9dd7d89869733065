#pragma once

#include "api/QBNetworking.h"

#include <QString>

/// What follows from the answers of a sign-in. Stateless; any thread.
namespace LoginOutcome
{

enum Code : qint64 {
    AccountLocked = 401020,
    SecondFactorRequired = 401037,
    ServerHasNoCodeWay = 401058,
    NoBoundAddress = 403058,
    AddressUnknown = 404029,
    AddressUnusable = 401064,
};

enum class Kind {
    Success,
    SecondFactor,     ///< have a code sent, then on to the verification window
    InformationAlert, ///< its text is the "Messages" entry "401058"
    CautionAlert,     ///< its text is the "Messages" entry "403058", for three codes alike
    ShowError,
};

/// Of the sign-in itself.
Kind ofLogin(const QBError &error);
/// Of the request that has a code sent; a second factor cannot be asked for again there.
Kind ofCodeRequest(const QBError &error);
/// Key in "Messages" of an alert's text, null for the other kinds.
QString alertKey(Kind kind);

/// The failed reply says that the next attempt needs a picture code.
bool demandsPictureCode(const ServerReply &reply);

} // namespace LoginOutcome
