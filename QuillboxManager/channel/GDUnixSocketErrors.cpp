#include "channel/GDUnixSocketErrors.h"

#include <system_error>

namespace GDUnixSocketErrors
{

namespace
{

QString textOfCode(int code)
{
    switch (code) {
    case BadSocket:
        return QStringLiteral("Bad socket");
    case Bind:
        return QStringLiteral("Failed to bind socket");
    case Listen:
        return QStringLiteral("Failed to listen on socket");
    case Accept:
        return QStringLiteral("Failed to accept connection, closing socket");
    case Unlink:
        return QStringLiteral("Failed to unlink socket");
    case Connect:
        return QStringLiteral("Failed to connect to socket");
    case Write:
        return QStringLiteral("Failed to write to socket");
    case Read:
        return QStringLiteral("Failed to read from socket");
    case Close:
        return QStringLiteral("Failed to close socket");
    case UnknownClient:
        return QStringLiteral("Unknown client. It is either disconnected or never existed");
    default:
        return QStringLiteral("Unknown Error");
    }
}

} // namespace

QString domain()
{
    return QStringLiteral("com.ferrolan.GDUnixSocket");
}

QBError gduds_errorForCode(int code)
{
    return QBError::withText(domain(), code, textOfCode(code));
}

QBError gduds_errorForCode(int code, const QString &info)
{
    if (info.isEmpty())
        return gduds_errorForCode(code);
    return QBError::withText(domain(), code, textOfCode(code) + QStringLiteral(". ") + info);
}

QString systemErrorInfo(int socket, int errorNumber)
{
    return QStringLiteral("fd: %1. errno: %2. ").arg(socket).arg(errorNumber) +
           QString::fromStdString(std::generic_category().message(errorNumber));
}

void handOver(QBError *target, const QBError &error)
{
    if (target)
        *target = error;
}

} // namespace GDUnixSocketErrors
