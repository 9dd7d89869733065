#pragma once

#include "api/QBError.h"

#include <QString>

/// Codes of errors in QBError::transportDomain().
enum class TransportError {
    Cancelled = -999,
    BadURL = -1000,
    TimedOut = -1001,
    CannotFindHost = -1003,
    CannotConnect = -1004,
    ConnectionLost = -1005,
    TooManyRedirects = -1007,
    BadReply = -1011,
    ReplyTooLarge = -1103,
    BodyUnreadable = -1021, ///< what was to be sent could not be read
    SecureConnectionFailed = -1200,
    CannotWrite = -3003,    ///< what arrived could not be kept
    SessionNotKept = -3004, ///< signed in, but the session could not be stored for the companion
};

/// The error with its text in the user's language (table "Messages", key "Transport…"), in English where the table has
/// none. `detail`, such as an HTTP status, becomes the recovery suggestion. Any thread.
QBError transportError(TransportError code, const QString &detail = {});
