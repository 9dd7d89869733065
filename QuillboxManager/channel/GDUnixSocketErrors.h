#pragma once

#include "api/QBError.h"

#include <QString>

/// Errors of the local socket channel. Any thread.
namespace GDUnixSocketErrors
{

enum Code {
    BadSocket = -3024,
    Bind = -3023,
    Listen = -3022,
    Accept = -3021,
    Unlink = -3020,
    Connect = -3019,
    Write = -3018,
    Read = -3017,
    Close = -3016,
    UnknownClient = -3015,
};

QString domain();
/// Error with the code's text.
QBError gduds_errorForCode(int code);
/// Error with "text. info".
QBError gduds_errorForCode(int code, const QString &info);
/// "fd: %d. errno: %d. %s" of a failed system call.
QString systemErrorInfo(int socket, int errorNumber);
/// Stores `error` where the caller asked for it; null `target`: nobody asked.
void handOver(QBError *target, const QBError &error);

} // namespace GDUnixSocketErrors
