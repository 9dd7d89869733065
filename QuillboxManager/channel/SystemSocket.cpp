#include "channel/SystemSocket.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>

static_assert(sizeof(sockaddr_un) >= SystemSocket::addressLength);

std::optional<sockaddr_un> SystemSocket::address(const QString &path)
{
    constexpr qsizetype longestPath = 103;
    const QByteArray bytes = path.toUtf8();
    sockaddr_un record = {};
    record.sun_family = AF_UNIX;
    std::copy_n(bytes.constData(), std::min(bytes.size(), longestPath), record.sun_path);
    if (QString::fromUtf8(record.sun_path) != path)
        return std::nullopt;
    return record;
}
