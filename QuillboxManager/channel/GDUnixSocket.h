#pragma once

#include "api/QBError.h"

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

/// Errors of the local socket channel.
namespace GDUnixSocketErrors {
enum Code {
    BadSocket = -3024, Bind = -3023, Listen = -3022, Accept = -3021, Unlink = -3020, Connect = -3019,
    Write = -3018, Read = -3017, Close = -3016, UnknownClient = -3015,
};
QString domain();
/// Error with the code's text.
QBError gduds_errorForCode(int code);
/// Error with "text. info".
QBError gduds_errorForCode(int code, const QString &info);
} // namespace GDUnixSocketErrors
