#include "api/WireAddress.h"

#include <QUrl>

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

constexpr qsizetype longestPlainHost = 63;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLower(char c)
{
    return c >= 'a' && c <= 'z';
}

/// Length of the scheme with its "://", 0 for any other.
qsizetype schemeLength(QByteArrayView address)
{
    if (address.startsWith("http://"))
        return 7;
    return address.startsWith("https://") ? 8 : 0;
}

qsizetype endOfServer(QByteArrayView address)
{
    const auto begin = address.begin() + schemeLength(address);
    const auto isEnd = [](char c) { return c == '/' || c == '?' || c == '#'; };
    return std::find_if(begin, address.end(), isEnd) - address.begin();
}

bool isPlainName(QByteArrayView host)
{
    for (const char *const odd : {"--", "..", "-.", ".-"})
        if (host.contains(odd))
            return false;
    // The last part of a number that stands for an address begins with a digit, even when it is hexadecimal.
    const QByteArrayView last = host.sliced(host.lastIndexOf('.') + 1);
    return host.front() != '-' && host.front() != '.' && host.back() != '-' && !last.isEmpty() && isLower(last.front());
}

bool isFourNumbers(QByteArrayView host)
{
    std::array<char, longestPlainHost + 1> text{};
    std::copy(host.begin(), host.end(), text.begin());
    in_addr numbers;
    return inet_pton(AF_INET, text.data(), &numbers) == 1;
}

/// A lower-case name or an address of four numbers, which stay as they are on the wire.
bool isPlainHost(QByteArrayView host)
{
    const bool known =
        std::all_of(host.begin(), host.end(), [](char c) { return isLower(c) || isDigit(c) || c == '-' || c == '.'; });
    if (!known || host.isEmpty() || host.size() > longestPlainHost)
        return false;
    return isPlainName(host) || isFourNumbers(host);
}

/// Empty, or a number that is written the usual way.
bool isPlainPort(QByteArrayView port)
{
    if (port.isEmpty())
        return true;
    port = port.sliced(1);
    const bool digits = std::all_of(port.begin(), port.end(), isDigit);
    return digits && !port.isEmpty() && port.size() <= 5 && port.front() != '0' && port.toInt() <= 65535;
}

bool isPlainServer(QByteArrayView server)
{
    const qsizetype scheme = schemeLength(server);
    if (scheme == 0)
        return false;
    const QByteArrayView authority = server.sliced(scheme);
    const qsizetype colon = authority.indexOf(':');
    const qsizetype hostLength = colon < 0 ? authority.size() : colon;
    return isPlainHost(authority.first(hostLength)) && isPlainPort(authority.sliced(hostLength));
}

/// Characters that mean the same, encoded or not, wherever they stand behind the server.
bool isPlainPath(QByteArrayView path)
{
    return std::all_of(path.begin(), path.end(), [](char c) {
        return isLower(c) || isDigit(c) || (c >= 'A' && c <= 'Z') || (c != '\0' && std::strchr("/?&=._-~:,;+*!$", c));
    });
}

QByteArray encodedByUrl(const QString &text)
{
    const QUrl url(text, QUrl::TolerantMode);
    const bool http = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && http && !url.host().isEmpty() ? url.toEncoded() : QByteArray();
}

} // namespace

std::optional<WireAddress> WireAddress::of(const QString &text)
{
    QByteArray address = text.toUtf8();
    const qsizetype length = endOfServer(address);
    if (isPlainServer(QByteArrayView(address).first(length)) && isPlainPath(QByteArrayView(address).sliced(length)))
        return WireAddress(address, length);
    address = encodedByUrl(text);
    if (address.isEmpty())
        return {};
    return WireAddress(address, endOfServer(address));
}
